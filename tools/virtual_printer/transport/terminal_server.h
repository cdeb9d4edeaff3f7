#ifndef VIRTUAL_PRINTER_TRANSPORT_TERMINAL_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_TERMINAL_SERVER_H_

#include <asio.hpp>
#include <optional>
#include <string>

#include "virtual_printer/transport/pseudo_terminal.h"
#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// Puts the printer on a pseudo terminal, as if on a serial line. From then on the line is there: while the server is
// closed, hosts can open the line, and the printer is deaf. To a host that it has dropped it is deaf for a while, or
// until it sees the line closed.
class TerminalServer : public Server {
 public:
  // The terminal is made when the server is opened first. The references must outlive the server.
  TerminalServer(asio::io_context& context, const std::string& link, HostListener& listener);

  void Open(PrinterMode mode) override;
  void Close() override { open_ = false; }
  std::string Place(PrinterMode /*mode*/) const override { return link_; }

 private:
  using Clock = asio::steady_timer::clock_type;

  void LookSoon();
  void Look();
  void Serve();
  void OnClosed();

  asio::io_context& context_;
  const std::string link_;
  std::optional<PseudoTerminal> terminal_;
  asio::steady_timer next_look_;
  HostListener& listener_;
  bool open_ = false;
  bool serving_ = false;
  bool host_has_gone_ = false;  // The one that was served last.
  Clock::time_point deaf_until_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_TERMINAL_SERVER_H_
