#ifndef VEXOCTL_CONSOLE_INTERRUPT_H_
#define VEXOCTL_CONSOLE_INTERRUPT_H_

namespace vexoctl {

// Runs on a thread of the system.
using InterruptHandler = void (*)();

// While one exists, Ctrl-C, Ctrl-Break and the closing of the console window call a handler instead of ending the
// process, so that no printer is left in the middle of an operation. One at a time.
class InterruptWatch {
 public:
  explicit InterruptWatch(InterruptHandler handler);
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_INTERRUPT_H_
