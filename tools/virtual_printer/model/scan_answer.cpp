#include "virtual_printer/model/scan_answer.h"

#include <string>

#include "virtual_printer/wire/hex_text.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kReceiptPrintersWanted = "getval \"printer_message\"";
constexpr std::string_view kLabelPrintersWanted = "\x1B\x1C& V1 getval \"printer_message\"\r\n";

// Mask and gateway stand empty here: they are told on a connection only.
constexpr const char* kToldOnAConnection = "0.0.0.0";

std::string DottedText(const Ipv4Address& address) {
  std::string text;
  for (const auto number : address) {
    text.append(text.empty() ? "" : ".").append(std::to_string(number));
  }
  return text;
}

// A printer has numbers that no other one has; so has its address.
std::string HexOf(const Ipv4Address& address, const std::string& separator) {
  std::string text;
  for (const auto number : address) {
    text.append(text.empty() ? "" : separator).append(HexText(number, 2));
  }
  return text;
}

void AppendLowByteFirst(const Ipv4Address& address, Bytes& bytes) {
  bytes.insert(bytes.end(), address.rbegin(), address.rend());
}

}  // namespace

std::uint16_t ScanPort(ScanKind kind) { return kind == ScanKind::kReceiptPrinters ? 3289 : 6000; }

bool AsksForPrinters(ScanKind kind, std::string_view datagram) {
  const std::string_view question = kind == ScanKind::kReceiptPrinters ? kReceiptPrintersWanted : kLabelPrintersWanted;
  return datagram.substr(0, question.size()) == question;
}

Message ScanAnswer(const NetworkIdentity& identity) {
  const std::string lines[] = {
      DottedText(identity.address),
      identity.state,
      identity.FullName(),
      "Virtual printer",                        // Model.
      "VP" + HexOf(identity.address, ""),       // Serial number.
      "1.0.0",                                  // Firmware.
      "02:00:" + HexOf(identity.address, ":"),  // MAC address, one of those that nobody owns.
      "Ethernet",
      std::to_string(identity.port),
      "static",  // How it came by its address.
      kToldOnAConnection,
      kToldOnAConnection,
      "V1",  // Command language.
      "203 dpi",
      "80 mm",
      "English",
  };
  Message answer;
  for (const std::string& line : lines) {
    answer.bytes.insert(answer.bytes.end(), line.begin(), line.end());
    answer.bytes.insert(answer.bytes.end(), {'\r', '\n'});
  }
  answer.text = identity.FullName() + " at " + lines[0] + ", " + identity.state;
  return answer;
}

Reaction TellNetworkDetails(const NetworkIdentity& identity) {
  Reaction reaction{"network details wanted"};
  AppendLowByteFirst(identity.address, reaction.answer.bytes);
  reaction.answer.bytes.insert(reaction.answer.bytes.end(), 4, 0);  // Flags, none of them set.
  AppendLowByteFirst(identity.mask, reaction.answer.bytes);
  AppendLowByteFirst(identity.gateway, reaction.answer.bytes);
  reaction.answer.text = "mask " + DottedText(identity.mask) + ", gateway " + DottedText(identity.gateway);
  return reaction;
}

}  // namespace virtual_printer
