// Finds printers on the network: broadcasts one request and collects the answers for a while.
#ifndef VEXO_DISCOVERY_NETWORK_SCAN_H_
#define VEXO_DISCOVERY_NETWORK_SCAN_H_

#include <cstdint>
#include <string>

namespace vexo {

enum class ScannedPrinters {
  kReceipt,
  kLabel,
};

// Returns VEXO_OK with the list in *text, or VEXO_ERROR_NO_PRINTER when no printer is ready. Throws std::bad_alloc.
int32_t ScanNetwork(ScannedPrinters printers, int64_t time_limit_ms, const char* target, std::string* text);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_NETWORK_SCAN_H_
