#include "vexoctl/progress.h"

#include <string>

namespace vexoctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kInterval(500);
constexpr uint64_t kKilobyte = 1024;

}  // namespace

Progress::Progress(uint64_t total) : total_(total), next_(Clock::now() + kInterval) {}

void Progress::Show(uint64_t done) {
  const auto now = Clock::now();
  if (!line_.visible() || now < next_) {
    return;
  }
  next_ = now + kInterval;
  std::string text = std::to_string(done / kKilobyte);
  if (total_ > 0) {
    text += " of " + std::to_string(total_ / kKilobyte) + " KiB sent, " + std::to_string(done * 100 / total_) + "%";
  } else {
    text += " KiB sent";
  }
  line_.Show(text);
}

}  // namespace vexoctl
