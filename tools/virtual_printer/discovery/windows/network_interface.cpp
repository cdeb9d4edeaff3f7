#include "virtual_printer/discovery/network_interface.h"

namespace virtual_printer {

// Not needed: on Windows a socket that is bound to an address also receives the broadcasts of its network.
std::optional<NetworkInterface> FindInterface(const asio::ip::address_v4&) { return std::nullopt; }

}  // namespace virtual_printer
