#ifndef VIRTUAL_PRINTER_CONNECTION_H_
#define VIRTUAL_PRINTER_CONNECTION_H_

#include <array>
#include <asio.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <system_error>

#include "virtual_printer/faults.h"
#include "virtual_printer/printer_model.h"
#include "virtual_printer/trace.h"

namespace virtual_printer {

// One host's TCP connection to the printer. It lives as long as an operation on its socket is under way, and belongs to
// the one thread of its io_context.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // The number names the connection in the trace. The state and the trace must outlive the connection.
  Connection(asio::ip::tcp::socket socket, int number, PrinterState& state, const Faults& faults, Trace& trace,
             std::function<void()> on_closed);

  void Start();

 private:
  struct QueuedPiece {
    AnswerPiece piece;
    std::string text;
  };

  void Read();
  void OnReceived(std::size_t size);
  void OnHostEnded(const std::error_code& error);
  void Handle(const std::vector<WireEvent>& events);
  void QueueAnswer(const WireEvent& answer);
  void SendNext();
  void WriteFront();
  void Close(const std::string& why);

  asio::ip::tcp::socket socket_;
  asio::steady_timer pause_;
  const int number_;
  const Faults faults_;
  Trace& trace_;
  std::function<void()> on_closed_;
  PrinterModel model_;
  ReceiveLimit limit_;

  std::array<std::uint8_t, 4096> received_{};
  std::deque<QueuedPiece> queue_;  // Its front is waiting for its pause, or being written.
  bool reading_ = false;
  bool sending_ = false;
  std::string host_ended_;  // How the host ended its side; empty while it may send.
  bool closed_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_CONNECTION_H_
