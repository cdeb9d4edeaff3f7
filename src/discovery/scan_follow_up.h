// What ready printers are asked once a scan has found them.
#ifndef VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
#define VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_

#include "discovery/scan_answer.h"

namespace vexo {

// Connects to the printer and asks for its addresses. Whatever fails leaves the record as it is.
void AskScannedPrinter(ScanRecord* record);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_SCAN_FOLLOW_UP_H_
