#ifndef VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_
#define VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_

#include <asio.hpp>
#include <optional>

namespace virtual_printer {

// The network that an address belongs to.
struct NetworkInterface {
  asio::ip::address_v4 mask;
  asio::ip::address_v4 broadcast;
};

// Nothing where no interface of this machine has a network with the address, or the system is not asked.
std::optional<NetworkInterface> FindInterface(const asio::ip::address_v4& address);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_
