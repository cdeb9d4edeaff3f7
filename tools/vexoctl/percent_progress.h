#ifndef VEXOCTL_PERCENT_PROGRESS_H_
#define VEXOCTL_PERCENT_PROGRESS_H_

#include <optional>
#include <string>

#include "vexoctl/console_line.h"
#include "vexoctl/settings.h"

namespace vexoctl {

// How far a transfer is, in percent, on the standard error stream: a bar on a console, else a line for each change.
class PercentProgress {
 public:
  // @param bar false: lines on a console, too, since there are others between them.
  PercentProgress(bool bar, const Settings& settings) : bar_(bar && line_.visible()), settings_(settings) {}

  void Show(int percent);

  // What happens now; beside the bar from now on, or a note.
  void ShowStep(const std::string& step);

  // What was shown last, if anything.
  std::optional<int> percent() const { return percent_; }

 private:
  void DrawBar();

  ConsoleLine line_;
  const bool bar_;
  const Settings& settings_;
  std::optional<int> percent_;
  std::string step_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_PERCENT_PROGRESS_H_
