#ifndef VIRTUAL_PRINTER_TRANSPORT_TCP_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_TCP_SERVER_H_

#include <asio.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// A loader without a port of its own uses the printer's.
struct TcpPorts {
  asio::ip::address address;
  std::uint16_t printer = 0;  // 0 for any free port.
  std::optional<std::uint16_t> loader;

  std::uint16_t Of(PrinterMode mode) const {
    return mode == PrinterMode::kOrdinary ? printer : loader.value_or(printer);
  }
};

// Accepts any number of hosts on a TCP port.
class TcpServer : public Server {
 public:
  // The references must outlive the server.
  TcpServer(asio::io_context& context, const TcpPorts& ports, HostListener& listener);

  void Open(PrinterMode mode) override;
  void Close() override;
  std::string Place(PrinterMode mode) const override;

  // The actual port, once the server has been opened as the ordinary printer.
  std::uint16_t port() const { return ports_.printer; }

  // False while the printer restarts.
  bool IsListening() const { return acceptor_.is_open(); }

 private:
  void Accept();

  asio::io_context& context_;
  TcpPorts ports_;  // A free port, once chosen, is kept over outages.
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer accept_pause_;
  HostListener& listener_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_TCP_SERVER_H_
