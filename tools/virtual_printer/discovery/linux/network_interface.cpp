#include "virtual_printer/discovery/network_interface.h"

#include <ifaddrs.h>
#include <netinet/in.h>

#include <cstring>
#include <memory>

namespace virtual_printer {
namespace {

bool IsIpv4(const sockaddr* address) { return address != nullptr && address->sa_family == AF_INET; }

asio::ip::address_v4::uint_type NumberOf(const sockaddr* address) {
  sockaddr_in ipv4;
  std::memcpy(&ipv4, address, sizeof ipv4);
  return ntohl(ipv4.sin_addr.s_addr);
}

}  // namespace

std::optional<NetworkInterface> FindInterface(const asio::ip::address_v4& address) {
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) {
    return std::nullopt;
  }
  const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> interfaces(first, freeifaddrs);
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next) {
    if (!IsIpv4(entry->ifa_addr) || !IsIpv4(entry->ifa_netmask)) {
      continue;
    }
    const auto mask = NumberOf(entry->ifa_netmask);
    const auto network = NumberOf(entry->ifa_addr) & mask;
    if ((address.to_uint() & mask) == network) {
      return NetworkInterface{asio::ip::address_v4(mask), asio::ip::address_v4(network | ~mask)};
    }
  }
  return std::nullopt;
}

}  // namespace virtual_printer
