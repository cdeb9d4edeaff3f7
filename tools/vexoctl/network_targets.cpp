#include "vexoctl/network_targets.h"

#include <windows.h>
#include <winsock2.h>

#include <iphlpapi.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vexoctl {
namespace {

constexpr char kAllNetworks[] = "255.255.255.255";
constexpr uint8_t kLoopbackNetwork = 127;

// Both in network order. A machine cannot broadcast on its loopback network, nor on a line to a single peer.
bool CanBroadcast(DWORD address, DWORD mask) {
  return address != 0 && (address & 0xFF) != kLoopbackNetwork && mask != 0 && mask != INADDR_BROADCAST;
}

std::string DottedText(DWORD address) {
  in_addr binary;
  binary.s_addr = address;
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &binary, text, sizeof text);
  return text;
}

// Empty when the system does not tell.
std::vector<MIB_IPADDRROW> InterfaceAddresses() {
  // A table in an array of rows: the head, a count, is shorter than a row.
  std::vector<MIB_IPADDRROW> storage(1);
  ULONG size = static_cast<ULONG>(storage.size() * sizeof storage[0]);
  DWORD result = NO_ERROR;
  while ((result = GetIpAddrTable(reinterpret_cast<MIB_IPADDRTABLE*>(storage.data()), &size, FALSE)) ==
         ERROR_INSUFFICIENT_BUFFER) {
    storage.resize(size / sizeof storage[0] + 1);
  }
  if (result != NO_ERROR) {
    return {};
  }
  const auto* const table = reinterpret_cast<const MIB_IPADDRTABLE*>(storage.data());
  return {table->table, table->table + table->dwNumEntries};
}

}  // namespace

std::vector<std::string> BroadcastAddresses() {
  std::vector<std::string> addresses;
  for (const MIB_IPADDRROW& row : InterfaceAddresses()) {
    if (!CanBroadcast(row.dwAddr, row.dwMask)) {
      continue;
    }
    const std::string address = DottedText(row.dwAddr | ~row.dwMask);
    if (std::find(addresses.begin(), addresses.end(), address) == addresses.end()) {
      addresses.push_back(address);
    }
  }
  if (addresses.empty()) {
    addresses.emplace_back(kAllNetworks);
  }
  return addresses;
}

bool IsIpv4Address(const std::string& text) {
  in_addr binary;
  return inet_pton(AF_INET, text.c_str(), &binary) == 1;
}

}  // namespace vexoctl
