#ifndef VEXOCTL_NETWORK_SCAN_H_
#define VEXOCTL_NETWORK_SCAN_H_

#include <chrono>
#include <string>
#include <vector>

#include "vexo/printer.hpp"

namespace vexoctl {

// Scans one target after the other, for so long each, and shows meanwhile how long it still takes. Gives each printer
// once, in UTF-8. Throws a Failure.
std::vector<vexo::NetworkPrinter> ScanNetworks(vexo::NetworkScan scan, const std::vector<std::string>& targets,
                                               std::chrono::milliseconds time);

}  // namespace vexoctl

#endif  // VEXOCTL_NETWORK_SCAN_H_
