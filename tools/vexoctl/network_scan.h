#ifndef VEXOCTL_NETWORK_SCAN_H_
#define VEXOCTL_NETWORK_SCAN_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vexoctl {

// A printer that has answered, as the library describes it. What it tells of itself, and in which order, is up to the
// printer, but for its address, which comes first.
struct NetworkPrinter {
  std::vector<std::string> fields;  // In UTF-8; some may be empty.

  // What to give as -p for this printer.
  std::string Descriptor() const { return "NET," + fields.front(); }
};

// One of the library's scans: ScanPos or ScanLabel.
using ScanFunction = int32_t (*)(int64_t time_limit, char* buffer, int32_t size, const char* target);

// Scans one target after the other, for so long each, and shows meanwhile how long it still takes. Gives each printer
// once. Throws a Failure.
std::vector<NetworkPrinter> ScanNetworks(ScanFunction scan, const std::vector<std::string>& targets,
                                         std::chrono::milliseconds time);

}  // namespace vexoctl

#endif  // VEXOCTL_NETWORK_SCAN_H_
