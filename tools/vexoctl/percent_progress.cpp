#include "vexoctl/percent_progress.h"

#include <algorithm>
#include <cstddef>

#include "vexoctl/console_text.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

constexpr int kWhole = 100;
constexpr int kBarLength = 40;

}  // namespace

void PercentProgress::Show(int percent) {
  percent = std::clamp(percent, 0, kWhole);
  if (percent_ == percent) {
    return;
  }
  percent_ = percent;
  if (bar_) {
    DrawBar();
  } else if (settings_.json) {
    WriteError(nlohmann::ordered_json{{"percent", percent}}.dump() + "\n");
  } else {
    WriteError(std::to_string(percent) + "%\n");
  }
}

void PercentProgress::ShowStep(const std::string& step) {
  step_ = step;
  if (bar_) {
    DrawBar();
  } else {
    PrintNote(step, settings_);
  }
}

void PercentProgress::DrawBar() {
  const int percent = percent_.value_or(0);
  const int filled = percent * kBarLength / kWhole;
  std::string text = "[" + std::string(static_cast<size_t>(filled), '#') +
                     std::string(static_cast<size_t>(kBarLength - filled), '.') + "] " + std::to_string(percent) + "%";
  if (!step_.empty()) {
    text += ", " + step_;
  }
  line_.Show(text);
}

}  // namespace vexoctl
