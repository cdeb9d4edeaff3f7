#include "discovery/network_scan.h"

#include <string>

#include "api/contain.h"
#include "discovery/scan_answer.h"
#include "vexo/extend.h"

namespace {

int32_t Scan(vexo::ScannedPrinters printers, int64_t time_limit_ms, char* buffer, int32_t size, const char* target) {
  if (target == nullptr || buffer == nullptr) {
    return VEXO_ERROR_PARAMETER;
  }
  return vexo::ContainOutOfMemory([=] {
    std::string text;
    const int32_t result = vexo::ScanNetwork(printers, time_limit_ms, target, &text);
    return result == VEXO_OK ? vexo::CopyScanText(text, buffer, size) : result;
  });
}

}  // namespace

int32_t ScanPos(int64_t timeLimitMs, char* buffer, int32_t size, const char* target) {
  return Scan(vexo::ScannedPrinters::kReceipt, timeLimitMs, buffer, size, target);
}

int32_t ScanLabel(int64_t timeLimitMs, char* buffer, int32_t size, const char* target) {
  return Scan(vexo::ScannedPrinters::kLabel, timeLimitMs, buffer, size, target);
}

// Compatibility: hosts import this function, but there is no SNMP scan.
int32_t ScanSnmp(void) { return VEXO_ERROR_NOT_SUPPORTED_PRINTER; }
