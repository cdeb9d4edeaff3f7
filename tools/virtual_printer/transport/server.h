#ifndef VIRTUAL_PRINTER_TRANSPORT_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_SERVER_H_

#include <functional>
#include <memory>
#include <string>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/transport/byte_stream.h"

namespace virtual_printer {

// Whoever serves the hosts that servers let in.
class HostListener {
 public:
  // Called once the stream is closed, not inside OnHost.
  using OnClosed = std::function<void()>;

  // A host has connected. The server may be closed by this.
  virtual void OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, OnClosed on_closed) = 0;

 protected:
  ~HostListener() = default;
};

// Puts the printer in one place, where hosts find it. Belongs to the one thread of its io_context, and must outlive the
// running of it. It is closed at first.
class Server {
 public:
  virtual ~Server() = default;

  // Lets hosts in from now on. Throws std::system_error when the place cannot be had, for instance because it is in
  // use, and stays closed.
  virtual void Open(PrinterMode mode) = 0;

  // Lets nobody in until it is opened again. Hosts that are in stay.
  virtual void Close() = 0;

  // The place, as it is shown to people and scripts. It may depend on the mode and, while the server is open, on what
  // the system has chosen.
  virtual std::string Place(PrinterMode mode) const = 0;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_SERVER_H_
