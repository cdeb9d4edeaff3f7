#ifndef VEXOCTL_INTERRUPT_H_
#define VEXOCTL_INTERRUPT_H_

namespace vexoctl {

// As long as one exists, Ctrl-C, Ctrl-Break and the closing of the console window are news (news.h) instead of the end
// of the process, so that a printer is not left behind with its monitoring on.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
};

}  // namespace vexoctl

#endif  // VEXOCTL_INTERRUPT_H_
