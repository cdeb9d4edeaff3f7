#ifndef VEXOCTL_NETWORK_TARGETS_H_
#define VEXOCTL_NETWORK_TARGETS_H_

#include <string>
#include <vector>

namespace vexoctl {

// The broadcast addresses of the networks that this machine is in, "192.168.1.255", each once; when none is known, the
// one for all networks.
std::vector<std::string> BroadcastAddresses();

// Whether the text is an IPv4 address in full. The library would take other texts for some address, too.
bool IsIpv4Address(const std::string& text);

}  // namespace vexoctl

#endif  // VEXOCTL_NETWORK_TARGETS_H_
