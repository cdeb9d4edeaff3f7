#include "vexoctl/console/progress.h"

#include <algorithm>

#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"

namespace vexoctl {

ConsoleLine::ConsoleLine() : visible_(ErrorsReachConsole()) {}

ConsoleLine::~ConsoleLine() {
  if (length_ > 0) {
    WriteError("\r" + std::string(length_, ' ') + "\r");
  }
}

void ConsoleLine::Show(const std::string& text) {
  if (!visible_) {
    return;
  }
  const size_t rest_of_old = length_ > text.size() ? length_ - text.size() : 0;
  length_ = text.size();
  WriteError("\r" + text + std::string(rest_of_old, ' '));
}

ByteProgress::ByteProgress(uint64_t total)
    : total_(total), next_(std::chrono::steady_clock::now() + kProgressInterval) {}

void ByteProgress::Show(uint64_t done) {
  constexpr uint64_t kKilobyte = 1024;
  const auto now = std::chrono::steady_clock::now();
  if (!line_.visible() || now < next_) {
    return;
  }
  next_ = now + kProgressInterval;
  std::string text = std::to_string(done / kKilobyte);
  if (total_ > 0) {
    text += " of " + std::to_string(total_ / kKilobyte) + " KiB sent, " + std::to_string(done * 100 / total_) + "%";
  } else {
    text += " KiB sent";
  }
  line_.Show(text);
}

void PercentProgress::Show(int percent) {
  percent = std::clamp(percent, 0, 100);
  if (percent_ == percent) {
    return;
  }
  percent_ = percent;
  if (bar_) {
    DrawBar();
  } else if (options_.json) {
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
    PrintNote(step, options_);
  }
}

void PercentProgress::DrawBar() {
  constexpr int kBarLength = 40;
  const int percent = percent_.value_or(0);
  const int filled = percent * kBarLength / 100;
  std::string text = "[" + std::string(static_cast<size_t>(filled), '#') +
                     std::string(static_cast<size_t>(kBarLength - filled), '.') + "] " + std::to_string(percent) + "%";
  if (!step_.empty()) {
    text += ", " + step_;
  }
  line_.Show(text);
}

}  // namespace vexoctl
