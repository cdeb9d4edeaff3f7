#include "vexoctl/printer_session.h"

#include "vexo/extend.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {

PrinterSession::PrinterSession(const std::string& descriptor)
    : open_action_("cannot open " + Utf8FromAnsi(descriptor)) {
  handle_.magic = VEXO_PRINTER_MAGIC;
  // Of the library's port functions this is the one that makes a port of any kind without looking for a disk or an
  // imaging device first.
  first_open_ = ScannerGunPortOpen(&handle_, descriptor.c_str());
  if (handle_.port == nullptr) {
    throw Failure(open_action_, first_open_);
  }
}

PrinterSession::~PrinterSession() {
  // Opening nothing closes the port and makes the library free it.
  DiskPortOpen(&handle_, "");
}

void PrinterSession::Open(std::optional<uint32_t> time_limit) {
  VexoPort& port = *handle_.port;
  if (port.kind == VEXO_PORT_SERIAL) {
    Require(first_open_, open_action_);
    if (!time_limit) {
      return;
    }
  }
  // What is open on USB now is a scanner gun at best; Open finds the printer. A serial line takes over its time limits
  // when it opens, so it has to open again to obey new ones.
  port.Close(&port);
  handle_.portOpen = 0;
  if (time_limit) {
    SetTimeLimit(*time_limit);
  }
  Require(port.Open(&port), open_action_);
  handle_.portOpen = 1;
}

std::string PrinterSession::GetUri() const {
  char uri[256] = {};
  uint32_t length = 0;
  Require(handle_.port->GetUri(handle_.port, uri, sizeof uri, &length), "cannot read the URI of the port");
  return {uri, length};
}

void PrinterSession::SetTimeLimit(uint32_t milliseconds) {
  VexoPort* const port = handle_.port;
  VexoPortTimeouts timeouts = {};
  Require(port->GetTimeouts(port, &timeouts), "cannot read the time limits of the port");
  timeouts.readInterval = milliseconds;  // A slow link brings even a short answer in pieces.
  timeouts.readMultiplier = 0;
  timeouts.readConstant = milliseconds;
  timeouts.writeMultiplier = 0;
  timeouts.writeConstant = milliseconds;
  timeouts.connect = milliseconds;
  Require(port->SetTimeouts(port, timeouts), "cannot set the time limits of the port");
}

}  // namespace vexoctl
