#ifndef VEXOCTL_CAPTURED_OUTPUT_H_
#define VEXOCTL_CAPTURED_OUTPUT_H_

#include <functional>
#include <string>
#include <string_view>
#include <thread>

namespace vexoctl {

// Takes what this process and its libraries write to the standard output of the C runtime, line by line as it comes, in
// place of the file or console it is connected to. Libraries with a C runtime of their own are out of reach. Nothing of
// the tool's own is to be written to the standard output meanwhile.
class CapturedOutput {
 public:
  // Given a line without its end, as it was written, on a thread of the capture.
  using LineHandler = std::function<void(std::string_view line)>;

  // Throws a Failure, the output being as it was.
  explicit CapturedOutput(LineHandler handler);
  ~CapturedOutput();  // Ends the capture.
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Connects the standard output as before, and returns when the last line, which may lack its end, has been handled.
  void End();

 private:
  void Redirect(int pipe_entry);
  void Restore();
  void HandleLines(int pipe_exit);
  void Add(std::string_view piece);

  const LineHandler handler_;
  std::string line_;  // What has come of the current one.
  std::thread reader_;
  int original_ = -1;  // Descriptor of what the standard output was connected to; -1: of nothing.
};

}  // namespace vexoctl

#endif  // VEXOCTL_CAPTURED_OUTPUT_H_
