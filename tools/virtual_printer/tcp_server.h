#ifndef VIRTUAL_PRINTER_TCP_SERVER_H_
#define VIRTUAL_PRINTER_TCP_SERVER_H_

#include <asio.hpp>

#include "virtual_printer/printer_service.h"

namespace virtual_printer {

// Puts the printer on a TCP port. Any number of hosts may be connected at a time; the printer serves them all.
class TcpServer {
 public:
  enum class Lifetime {
    kUntilStopped,
    kOneConnection,  // Takes one connection only; the io_context is stopped when it has ended.
  };

  // Listens from now on. The references must outlive the server. Throws std::system_error when the endpoint cannot be
  // had, for instance because its port is in use.
  TcpServer(asio::io_context& context, const asio::ip::tcp::endpoint& endpoint, Lifetime lifetime,
            PrinterService& service);

  // Where hosts can connect: the port is the real one, also when any free port was asked for.
  asio::ip::tcp::endpoint LocalEndpoint() const { return acceptor_.local_endpoint(); }

 private:
  void Accept();
  void OnConnectionClosed();

  asio::io_context& context_;
  asio::ip::tcp::acceptor acceptor_;
  asio::steady_timer accept_pause_;
  const Lifetime lifetime_;
  PrinterService& service_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TCP_SERVER_H_
