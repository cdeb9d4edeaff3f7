#ifndef VIRTUAL_PRINTER_MODEL_SCAN_ANSWER_H_
#define VIRTUAL_PRINTER_MODEL_SCAN_ANSWER_H_

#include <cstdint>
#include <string_view>

#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// Hosts look for receipt and for label printers on ports of their own, in words of their own.
enum class ScanKind { kReceiptPrinters, kLabelPrinters };

std::uint16_t ScanPort(ScanKind kind);

// Whether a datagram asks printers to tell about themselves. Hosts may put more behind the question.
bool AsksForPrinters(ScanKind kind, std::string_view datagram);

// The answer: sixteen lines of text.
Message ScanAnswer(const NetworkIdentity& identity);

// A host that has found the printer asks for its mask and gateway on a connection.
Reaction TellNetworkDetails(const NetworkIdentity& identity);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_SCAN_ANSWER_H_
