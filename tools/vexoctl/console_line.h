#ifndef VEXOCTL_CONSOLE_LINE_H_
#define VEXOCTL_CONSOLE_LINE_H_

#include <cstddef>
#include <string>

namespace vexoctl {

// The line of the console that a user watches while something takes its time, written over and over. Nothing is shown
// when the standard error stream is not a console.
class ConsoleLine {
 public:
  ConsoleLine();
  ~ConsoleLine();  // Wipes the line.
  ConsoleLine(const ConsoleLine&) = delete;
  ConsoleLine& operator=(const ConsoleLine&) = delete;

  bool visible() const { return visible_; }

  void Show(const std::string& text);

 private:
  const bool visible_;
  size_t length_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_LINE_H_
