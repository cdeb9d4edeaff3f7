#ifndef VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_
#define VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "virtual_printer/wire/message.h"

namespace virtual_printer {

using Ipv4Address = std::array<std::uint8_t, 4>;  // In the order in which it is written.

// What the printer tells hosts that scan the network.
struct NetworkIdentity {
  std::string name = "VIRTUAL";
  std::string state = "ready";
  int number = 0;  // From 1 if one program simulates several printers; 0 for a single one.
  Ipv4Address address{};
  Ipv4Address mask{255, 255, 255, 0};
  Ipv4Address gateway{};
  std::uint16_t port = 9100;

  // Unique among the printers of one program.
  std::string FullName() const { return number > 0 ? name + "-" + std::to_string(number) : name; }
};

// Scans for receipt and for label printers use ports and questions of their own.
enum class ScanKind { kReceiptPrinters, kLabelPrinters };

std::uint16_t ScanPort(ScanKind kind);

// Whether a datagram is the question of a scan. Hosts may append to the question.
bool IsScanQuestion(ScanKind kind, std::string_view datagram);

// The answer to a scan: sixteen lines of text.
Message ScanAnswer(const NetworkIdentity& identity);

// Answers a host that has found the printer and asks for its mask and gateway on a connection.
CommandResult TellNetworkDetails(const NetworkIdentity& identity);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_
