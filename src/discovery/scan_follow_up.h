// Queries the ready printers that a scan has found.
#ifndef VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
#define VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_

#include <cstdint>

#include "discovery/scan_answer.h"

namespace vexo {

// Limits that hold however many printers answer, and whatever forged answers contain.
inline constexpr int kMostFollowUps = 16;           // In parallel.
inline constexpr uint32_t kFollowUpLimitMs = 7000;  // In total: one dead address takes 6 s.

// Connects to the printers in parallel and asks for their addresses. Each address is queried once, and its reply goes
// to every record that names it. A record stays unchanged when its address is not a dotted IPv4 address, its query
// fails, or its reply is late. Throws std::bad_alloc.
void AskScannedPrinters(ScanList* list);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
