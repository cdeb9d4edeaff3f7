#ifndef VIRTUAL_PRINTER_TCP_SERVER_H_
#define VIRTUAL_PRINTER_TCP_SERVER_H_

#include <asio.hpp>
#include <cstdint>
#include <functional>
#include <optional>

#include "virtual_printer/printer_service.h"

namespace virtual_printer {

// Where the printer is found. A loader without a port of its own has the printer's.
struct TcpPorts {
  asio::ip::address address;
  std::uint16_t printer = 0;  // 0 takes any free one.
  std::optional<std::uint16_t> loader;

  std::uint16_t Of(PrinterMode mode) const {
    return mode == PrinterMode::kOrdinary ? printer : loader.value_or(printer);
  }
};

// Puts the printer on a TCP port. Any number of hosts may be connected at a time; the printer serves them all.
class TcpServer : private OutageListener {
 public:
  enum class Lifetime {
    kUntilStopped,
    kOneConnection,  // Takes one connection only; the io_context is stopped when it has ended.
  };

  using OnBack = std::function<void(PrinterMode mode)>;

  // Listens from now on. After an outage it listens again, and says so. The references must outlive the server. Throws
  // std::system_error when the port cannot be had, for instance because it is in use.
  TcpServer(asio::io_context& context, const TcpPorts& ports, PrinterMode mode, Lifetime lifetime,
            PrinterService& service, OnBack on_back);
  ~TcpServer();
  TcpServer(const TcpServer&) = delete;
  TcpServer& operator=(const TcpServer&) = delete;

  // Where hosts can connect: the port is the real one, also when any free port was asked for.
  asio::ip::tcp::endpoint LocalEndpoint() const { return acceptor_.local_endpoint(); }

 private:
  void OnOutage(const Outage& outage) override;
  void Return(PrinterMode mode);
  void Listen(PrinterMode mode);
  void Accept();
  void OnConnectionClosed();

  asio::io_context& context_;
  TcpPorts ports_;
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer accept_pause_;
  asio::steady_timer outage_;
  const Lifetime lifetime_;
  PrinterService& service_;
  const OnBack on_back_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TCP_SERVER_H_
