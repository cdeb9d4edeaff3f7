#ifndef VEXOCTL_INTERRUPT_H_
#define VEXOCTL_INTERRUPT_H_

namespace vexoctl {

// What to do about an interrupt, on a thread of the system's.
using InterruptHandler = void (*)();

// Makes the interrupt news (news.h).
void PostInterrupt();

// As long as one exists, Ctrl-C, Ctrl-Break and the closing of the console window go to a handler instead of ending the
// process, so that a printer is not left behind in the middle of something. One at a time.
class InterruptWatch {
 public:
  explicit InterruptWatch(InterruptHandler handler = PostInterrupt);
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

}  // namespace vexoctl

#endif  // VEXOCTL_INTERRUPT_H_
