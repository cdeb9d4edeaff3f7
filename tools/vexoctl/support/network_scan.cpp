#include "vexoctl/support/network_scan.h"

#include <windows.h>
#include <winsock2.h>

#include <iphlpapi.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <future>
#include <system_error>
#include <utility>

#include "vexoctl/console/failure.h"
#include "vexoctl/console/progress.h"
#include "vexoctl/console/text.h"

namespace vexoctl {
namespace {

constexpr char kAllNetworks[] = "255.255.255.255";
constexpr uint8_t kLoopbackNetwork = 127;

// Adds the printers that are new: one that is in two of the networks answers in each.
void AddNewPrinters(std::vector<vexo::NetworkPrinter> found, std::vector<vexo::NetworkPrinter>* printers) {
  for (vexo::NetworkPrinter& printer : found) {
    for (std::string& field : printer.fields) {
      field = Utf8FromPrinter(field);
    }
    const bool known = std::any_of(printers->begin(), printers->end(),
                                   [&](const vexo::NetworkPrinter& other) { return other.fields == printer.fields; });
    if (!known) {
      printers->push_back(std::move(printer));
    }
  }
}

std::string Seconds(std::chrono::milliseconds time) { return std::to_string((time.count() + 999) / 1000); }

void ShowTimeLeft(const std::future<std::vector<vexo::NetworkPrinter>>& scan, const std::string& target,
                  std::chrono::milliseconds time) {
  ConsoleLine line;
  const auto end = std::chrono::steady_clock::now() + time;
  while (scan.wait_for(kProgressInterval) != std::future_status::ready) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    line.Show("scanning " + target + ", " +
              (left.count() > 0 ? Seconds(left) + " s left" : "asking the printers found for details"));
  }
}

// Both in network order. There is no broadcast on the loopback network and on a link to a single peer.
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

// Empty if the system does not list them.
std::vector<MIB_IPADDRROW> InterfaceAddresses() {
  // Rows as storage for the table, whose head, a count, is shorter than a row.
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

std::vector<vexo::NetworkPrinter> ScanNetworks(vexo::NetworkScan scan, const std::vector<std::string>& targets,
                                               std::chrono::milliseconds time) {
  std::vector<vexo::NetworkPrinter> printers;
  for (const std::string& target : targets) {
    std::error_code error;
    std::future<std::vector<vexo::NetworkPrinter>> found =
        std::async(std::launch::async, [&] { return vexo::ScanNetwork(scan, time, target, &error); });
    ShowTimeLeft(found, target, time);
    AddNewPrinters(found.get(), &printers);
    Require(error, "cannot scan " + target);
  }
  return printers;
}

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
