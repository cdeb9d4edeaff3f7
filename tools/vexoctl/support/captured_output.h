#ifndef VEXOCTL_SUPPORT_CAPTURED_OUTPUT_H_
#define VEXOCTL_SUPPORT_CAPTURED_OUTPUT_H_

#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace vexoctl {

// Receives what this process and its libraries write to the standard output of the C runtime, line by line, in place of
// the file or console behind it. Libraries with a C runtime of their own are not captured. The tool itself must not
// write to the standard output meanwhile.
class CapturedOutput {
 public:
  // Receives a line without its end, on a thread of the capture.
  using LineHandler = std::function<void(std::string_view line)>;

  // Throws a Failure; the output is unchanged then.
  explicit CapturedOutput(LineHandler handler);
  ~CapturedOutput();  // Ends the capture.
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Restores the standard output, and returns when the last line, which may lack its end, has been handled.
  void End();

 private:
  void Redirect(int pipe_entry);
  void Restore();
  void HandleLines(int pipe_exit);
  void Add(std::string_view piece);

  const LineHandler handler_;
  std::string line_;  // The beginning of the current one.
  std::thread reader_;
  int original_ = -1;  // Descriptor of the former standard output; -1: there was none.
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_CAPTURED_OUTPUT_H_
