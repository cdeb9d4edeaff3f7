#ifndef VEXOCTL_SUPPORT_NETWORK_SCAN_H_
#define VEXOCTL_SUPPORT_NETWORK_SCAN_H_

#include <chrono>
#include <string>
#include <vector>

#include "vexo/printer.hpp"

namespace vexoctl {

// Scans the targets one after the other, each for the given time, and shows the time left. Returns each printer once,
// in UTF-8. Throws a Failure.
std::vector<vexo::NetworkPrinter> ScanNetworks(vexo::NetworkScan scan, const std::vector<std::string>& targets,
                                               std::chrono::milliseconds time);

// The broadcast addresses of this machine's networks, "192.168.1.255", each once; if none is known, the one for all
// networks.
std::vector<std::string> BroadcastAddresses();

// Whether a text is a complete IPv4 address. The library accepts other texts, too.
bool IsIpv4Address(const std::string& text);

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_NETWORK_SCAN_H_
