#ifndef VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_
#define VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_

#include <asio.hpp>
#include <optional>

namespace virtual_printer {

// The network of an interface of this machine.
struct NetworkInterface {
  asio::ip::address_v4 mask;
  asio::ip::address_v4 broadcast;
};

// Finds the network that the address belongs to. Returns nothing if no interface has it, and always on Windows.
std::optional<NetworkInterface> FindInterface(const asio::ip::address_v4& address);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DISCOVERY_NETWORK_INTERFACE_H_
