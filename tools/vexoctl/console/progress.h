// The progress of long operations, on the standard error output.
#ifndef VEXOCTL_CONSOLE_PROGRESS_H_
#define VEXOCTL_CONSOLE_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "vexoctl/console/options.h"

namespace vexoctl {

// How often a line that changes all the time is written.
inline constexpr std::chrono::milliseconds kProgressInterval(500);

// A line on the console that is overwritten with each new text. Nothing is shown if the standard error output is not a
// console.
class ConsoleLine {
 public:
  ConsoleLine();
  ~ConsoleLine();  // Erases the line.
  ConsoleLine(const ConsoleLine&) = delete;
  ConsoleLine& operator=(const ConsoleLine&) = delete;

  bool visible() const { return visible_; }

  void Show(const std::string& text);

 private:
  const bool visible_;
  size_t length_ = 0;
};

// Bytes sent, on a console line; nothing for a short transfer.
class ByteProgress {
 public:
  // @param total in bytes; 0 if it is not known.
  explicit ByteProgress(uint64_t total);

  void Show(uint64_t done);

 private:
  const uint64_t total_;
  ConsoleLine line_;
  std::chrono::steady_clock::time_point next_;
};

// Percentages: a bar on a console, else a line for each change.
class PercentProgress {
 public:
  // @param bar false: lines on a console, too, because other lines are written between them.
  PercentProgress(bool bar, const Options& options) : bar_(bar && line_.visible()), options_(options) {}

  void Show(int percent);

  // The current step of the operation; beside the bar from now on, or a note.
  void ShowStep(const std::string& step);

  // The percentage last shown, if any.
  std::optional<int> percent() const { return percent_; }

 private:
  void DrawBar();

  ConsoleLine line_;
  const bool bar_;
  const Options& options_;
  std::optional<int> percent_;
  std::string step_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_PROGRESS_H_
