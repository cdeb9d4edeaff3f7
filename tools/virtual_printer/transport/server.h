#ifndef VIRTUAL_PRINTER_TRANSPORT_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_SERVER_H_

#include <asio.hpp>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/transport/byte_stream.h"

namespace virtual_printer {

// Serves the hosts that connect to a server.
class HostListener {
 public:
  // Called once the stream is closed, never inside OnHost.
  using OnClosed = std::function<void()>;

  // A host has connected. This may close the server.
  virtual void OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, OnClosed on_closed) = 0;

 protected:
  ~HostListener() = default;
};

// Offers the printer at one place: a TCP port or a line. Runs in the one thread of its io_context and must outlive the
// running of it. Initially closed.
class Server {
 public:
  virtual ~Server() = default;

  // Accepts hosts from now on. If the place is not available, throws std::system_error and stays closed.
  virtual void Open(PrinterMode mode) = 0;

  // Accepts no more hosts until it is opened again. Connected hosts stay.
  virtual void Close() = 0;

  // The place in words for people and scripts. It may depend on the mode and, while the server is open, on what the
  // system has chosen.
  virtual std::string Place(PrinterMode mode) const = 0;
};

// A line is what this system offers for a printer attached to the machine: on Windows a named pipe, used like a USB
// printer; elsewhere a pseudo terminal, used like a serial line. It has one host at a time. The references must outlive
// the server.
std::unique_ptr<Server> MakeLineServer(asio::io_context& context, const std::string& name, HostListener& listener);

// An address and a port.
template <typename Endpoint>
std::string EndpointText(const Endpoint& endpoint) {
  std::ostringstream text;
  text << endpoint;
  return text.str();
}

// The most common failure has the same words on every system.
inline std::runtime_error ListenError(const std::string& place, const std::error_code& error) {
  const bool in_use = error == asio::error::address_in_use;
  return std::runtime_error("cannot listen on " + place + ": " + (in_use ? "it is in use" : error.message()));
}

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_SERVER_H_
