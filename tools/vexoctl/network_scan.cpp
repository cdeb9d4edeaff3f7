#include "vexoctl/network_scan.h"

#include <algorithm>
#include <cstddef>
#include <future>
#include <string_view>

#include "vexo/error.h"
#include "vexoctl/console_line.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

using Clock = std::chrono::steady_clock;

// A larger buffer in place of a second scan, which might find other printers.
constexpr size_t kRecordSize = 256;
constexpr size_t kMostPrinters = 4096;

constexpr std::chrono::milliseconds kInterval(500);

std::string_view TakeUntil(char separator, std::string_view* text) {
  const std::string_view taken = text->substr(0, text->find(separator));
  text->remove_prefix(std::min(taken.size() + 1, text->size()));
  return taken;
}

// "<address>;ready;<field>;...;<field>"
NetworkPrinter ParseRecord(std::string_view record) {
  NetworkPrinter printer;
  for (bool last = false; !last;) {
    last = record.find(';') == std::string_view::npos;
    printer.fields.push_back(Utf8FromPrinter(TakeUntil(';', &record)));
  }
  return printer;
}

// A printer that is in two of the networks answers in each.
void AddPrinters(std::string_view records, std::vector<NetworkPrinter>* printers) {
  while (!records.empty()) {
    NetworkPrinter printer = ParseRecord(TakeUntil('|', &records));
    const bool known = std::any_of(printers->begin(), printers->end(),
                                   [&](const NetworkPrinter& other) { return other.fields == printer.fields; });
    if (!known) {
      printers->push_back(std::move(printer));
    }
  }
}

std::string Seconds(std::chrono::milliseconds time) { return std::to_string((time.count() + 999) / 1000); }

void ShowWhileItTakes(const std::future<int32_t>& scan, const std::string& target, std::chrono::milliseconds time) {
  ConsoleLine line;
  const auto end = Clock::now() + time;
  while (scan.wait_for(kInterval) != std::future_status::ready) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    line.Show("scanning " + target + ", " +
              (left.count() > 0 ? Seconds(left) + " s left" : "asking the printers found for details"));
  }
}

}  // namespace

std::vector<NetworkPrinter> ScanNetworks(ScanFunction scan, const std::vector<std::string>& targets,
                                         std::chrono::milliseconds time) {
  std::vector<NetworkPrinter> printers;
  std::vector<char> records(kMostPrinters * kRecordSize + 1);
  for (const std::string& target : targets) {
    std::future<int32_t> result = std::async(std::launch::async, [&] {
      return scan(time.count(), records.data(), static_cast<int32_t>(records.size() - 1), target.c_str());
    });
    ShowWhileItTakes(result, target, time);
    const int32_t code = result.get();
    if (code != VEXO_ERROR_NO_PRINTER) {
      Require(code, "cannot scan " + target);
      AddPrinters(records.data(), &printers);
    }
  }
  return printers;
}

}  // namespace vexoctl
