// Finds printers on the network: one question to everybody, the answers of a while.
#ifndef VEXO_DISCOVERY_NETWORK_SCAN_H_
#define VEXO_DISCOVERY_NETWORK_SCAN_H_

#include <cstdint>
#include <string>

namespace vexo {

enum class ScannedPrinters {
  kReceipt,
  kLabel,
};

// `text` is written with 0. -103: no printer says that it is ready. std::bad_alloc is the caller's to catch.
int32_t ScanNetwork(ScannedPrinters printers, int64_t time_limit_ms, const char* target, std::string* text);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_NETWORK_SCAN_H_
