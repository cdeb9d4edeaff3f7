#include "vexoctl/progress.h"

#include <string>

#include "vexoctl/console_text.h"

namespace vexoctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kInterval(500);
constexpr uint64_t kKilobyte = 1024;

}  // namespace

Progress::Progress(uint64_t total) : total_(total), visible_(ErrorsReachConsole()), next_(Clock::now() + kInterval) {}

Progress::~Progress() {
  if (line_length_ > 0) {
    WriteError("\r" + std::string(line_length_, ' ') + "\r");
  }
}

void Progress::Show(uint64_t done) {
  const auto now = Clock::now();
  if (!visible_ || now < next_) {
    return;
  }
  next_ = now + kInterval;
  std::string line = std::to_string(done / kKilobyte);
  if (total_ > 0) {
    line += " of " + std::to_string(total_ / kKilobyte) + " KiB sent, " + std::to_string(done * 100 / total_) + "%";
  } else {
    line += " KiB sent";
  }
  line_length_ = line.size();  // Numbers only grow: the new line covers the old one.
  WriteError("\r" + line);
}

}  // namespace vexoctl
