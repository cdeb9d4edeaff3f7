#ifndef VEXOCTL_PROGRESS_H_
#define VEXOCTL_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace vexoctl {

// A line on the console that says how far a long transfer has come. Nothing is shown for a short one, or when the
// standard error stream is not a console.
class Progress {
 public:
  // @param total in bytes; 0 when it is not known.
  explicit Progress(uint64_t total);
  ~Progress();  // Wipes the line.
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Show(uint64_t done);

 private:
  const uint64_t total_;
  const bool visible_;
  std::chrono::steady_clock::time_point next_;
  size_t line_length_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_PROGRESS_H_
