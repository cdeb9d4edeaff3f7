/**
 * @file scan.hpp
 * The network scan for C++ hosts. Part of printer.hpp.
 */
#ifndef VEXO_SCAN_HPP_
#define VEXO_SCAN_HPP_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "vexo/detail/split.hpp"
#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

/** A printer that was found on the network. Do not trust its texts: anybody can answer a scan. */
struct NetworkPrinter {
  std::vector<std::string> fields; /**< At least one. VexoScanField names those that are the same for all printers. */

  /** @return a field; empty if the record is cut off before it. */
  std::string Field(size_t index) const { return index < fields.size() ? fields[index] : ""; }

  std::string address() const { return Field(VEXO_SCAN_ADDRESS); }           /**< IP address. */
  std::string state() const { return Field(VEXO_SCAN_STATE); }               /**< "ready". */
  std::string network_mask() const { return Field(VEXO_SCAN_NETWORK_MASK); } /**< "255.255.255.0". */
  std::string gateway() const { return Field(VEXO_SCAN_GATEWAY); }           /**< IP address of the gateway. */

  /** @return the descriptor to make a Printer of. */
  std::string descriptor() const { return "NET," + address(); }
};

/** ScanPos or ScanLabel. */
using NetworkScan = int32_t (*)(int64_t time_limit, char* buffer, int32_t size, const char* target);

/**
 * Scans the network for printers, 4096 at most; blocks for the time limit and for the questions to the printers found.
 * Finding no printer is no error.
 *
 * @param scan ScanPos for receipt printers, ScanLabel for label printers.
 */
inline std::vector<NetworkPrinter> ScanNetwork(NetworkScan scan, std::chrono::milliseconds time_limit,
                                               const std::string& target = "255.255.255.255",
                                               std::error_code* error = nullptr) {
  constexpr size_t kSize = size_t{4096} * VEXO_SCAN_RECORD_SIZE;
  std::vector<char> list(kSize + 1);
  const int32_t result = scan(time_limit.count(), list.data(), static_cast<int32_t>(kSize), target.c_str());
  StoreOrThrow(result == VEXO_ERROR_NO_PRINTER ? VEXO_OK : result, "scan " + target, error);
  std::vector<NetworkPrinter> printers;
  for (const std::string& record : detail::SplitRecords(list.data(), '|')) {
    printers.push_back({detail::SplitFields(record, ';')});
  }
  return printers;
}

}  // namespace vexo

#endif  // VEXO_SCAN_HPP_
