// What ready printers are asked once a scan has found them.
#ifndef VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
#define VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_

#include <cstdint>

#include "discovery/scan_answer.h"

namespace vexo {

// However many printers there are, and whatever an answer that was forged names.
inline constexpr int kMostFollowUps = 16;           // At a time.
inline constexpr uint32_t kFollowUpLimitMs = 7000;  // For all: one dead address takes 6 s.

// Connects to the printers and asks for their addresses, side by side. Each address is asked once; its reply goes to
// every record that names it. Whatever fails, or does not come in time, leaves the records as they are; so does an
// address that is none. Throws std::bad_alloc.
void AskScannedPrinters(ScanList* list);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
