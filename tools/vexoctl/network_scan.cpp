#include "vexoctl/network_scan.h"

#include <algorithm>
#include <future>
#include <system_error>
#include <utility>

#include "vexoctl/console_line.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kInterval(500);

// A printer that is in two of the networks answers in each.
void AddPrinters(std::vector<vexo::NetworkPrinter> found, std::vector<vexo::NetworkPrinter>* printers) {
  for (vexo::NetworkPrinter& printer : found) {
    for (std::string& field : printer.fields) {
      field = Utf8FromPrinter(field);
    }
    const bool known = std::any_of(printers->begin(), printers->end(),
                                   [&](const vexo::NetworkPrinter& other) { return other.fields == printer.fields; });
    if (!known) {
      printers->push_back(std::move(printer));
    }
  }
}

std::string Seconds(std::chrono::milliseconds time) { return std::to_string((time.count() + 999) / 1000); }

void ShowWhileItTakes(const std::future<std::vector<vexo::NetworkPrinter>>& scan, const std::string& target,
                      std::chrono::milliseconds time) {
  ConsoleLine line;
  const auto end = Clock::now() + time;
  while (scan.wait_for(kInterval) != std::future_status::ready) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    line.Show("scanning " + target + ", " +
              (left.count() > 0 ? Seconds(left) + " s left" : "asking the printers found for details"));
  }
}

}  // namespace

std::vector<vexo::NetworkPrinter> ScanNetworks(vexo::NetworkScan scan, const std::vector<std::string>& targets,
                                               std::chrono::milliseconds time) {
  std::vector<vexo::NetworkPrinter> printers;
  for (const std::string& target : targets) {
    std::error_code error;
    std::future<std::vector<vexo::NetworkPrinter>> found =
        std::async(std::launch::async, [&] { return vexo::ScanNetwork(scan, time, target, &error); });
    ShowWhileItTakes(found, target, time);
    AddPrinters(found.get(), &printers);
    Require(error.value(), "cannot scan " + target);
  }
  return printers;
}

}  // namespace vexoctl
