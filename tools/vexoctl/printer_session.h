#ifndef VEXOCTL_PRINTER_SESSION_H_
#define VEXOCTL_PRINTER_SESSION_H_

#include <cstdint>
#include <optional>
#include <string>

#include "vexo/printer.hpp"

namespace vexoctl {

// A printer, whose failures are told with its descriptor.
class PrinterSession {
 public:
  // Makes the port that a descriptor names. Printers are not contacted yet, but the device of a serial or USB port may
  // be opened already; that it cannot be opened is reported by Open only. Throws a Failure when there is no such port.
  explicit PrinterSession(const std::string& descriptor);

  // Opens the port, once. Throws a Failure.
  // @param time_limit for one connect, one write, an answer and a gap in it, in milliseconds; the port's own limits
  //                   when empty.
  void Open(std::optional<uint32_t> time_limit);

  // The canonical device URI, in the user's ANSI code page; empty for a buffer port.
  std::string GetUri() const { return printer_.uri(); }

  // Of the port, a VexoPortKind.
  int32_t kind() const { return printer_.kind(); }

  // For the library's functions; valid as long as the session.
  VexoPrinterHandle* handle() { return printer_.handle(); }

 private:
  const std::string open_action_;  // "cannot open ...", for a failure.
  vexo::Printer printer_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_PRINTER_SESSION_H_
