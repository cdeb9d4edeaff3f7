#include "virtual_printer/model/network_identity.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kReceiptPrinterQuestion = "getval \"printer_message\"";
constexpr std::string_view kLabelPrinterQuestion = "\x1B\x1C& V1 getval \"printer_message\"\r\n";

// Mask and gateway, which the printer tells on a connection only.
constexpr const char* kToldOnConnection = "0.0.0.0";

std::string DottedText(const Ipv4Address& address) {
  std::string text;
  for (const auto number : address) {
    text.append(text.empty() ? "" : ".").append(std::to_string(number));
  }
  return text;
}

// Serial number and MAC address are derived from the IP address, which makes them unique.
std::string HexOf(const Ipv4Address& address, const std::string& separator) {
  std::string text;
  for (const auto number : address) {
    text.append(text.empty() ? "" : separator).append(HexText(number, 2));
  }
  return text;
}

void AppendReversed(const Ipv4Address& address, Bytes& bytes) {
  bytes.insert(bytes.end(), address.rbegin(), address.rend());
}

}  // namespace

std::uint16_t ScanPort(ScanKind kind) { return kind == ScanKind::kReceiptPrinters ? 3289 : 6000; }

bool IsScanQuestion(ScanKind kind, std::string_view datagram) {
  const std::string_view question =
      kind == ScanKind::kReceiptPrinters ? kReceiptPrinterQuestion : kLabelPrinterQuestion;
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
      "02:00:" + HexOf(identity.address, ":"),  // MAC address, locally administered.
      "Ethernet",
      std::to_string(identity.port),
      "static",  // How the address was assigned.
      kToldOnConnection,
      kToldOnConnection,
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

CommandResult TellNetworkDetails(const NetworkIdentity& identity) {
  CommandResult result{"network details wanted"};
  AppendReversed(identity.address, result.answer.bytes);
  result.answer.bytes.insert(result.answer.bytes.end(), 4, 0);  // Flags, all clear.
  AppendReversed(identity.mask, result.answer.bytes);
  AppendReversed(identity.gateway, result.answer.bytes);
  result.answer.text = "mask " + DottedText(identity.mask) + ", gateway " + DottedText(identity.gateway);
  return result;
}

}  // namespace virtual_printer
