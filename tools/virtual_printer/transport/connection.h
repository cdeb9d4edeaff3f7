#ifndef VIRTUAL_PRINTER_TRANSPORT_CONNECTION_H_
#define VIRTUAL_PRINTER_TRANSPORT_CONNECTION_H_

#include <array>
#include <asio.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <system_error>

#include "virtual_printer/transport/byte_stream.h"
#include "virtual_printer/wire/connection_faults.h"
#include "virtual_printer/wire/message.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// Processes the input of connections.
class ConnectionListener {
 public:
  virtual void OnReceived(int connection, const std::uint8_t* data, std::size_t size) = 0;
  // The host has stopped sending, but may still receive. Called once for each connection.
  virtual void OnHostEnded(int connection) = 0;
  // Called once, last.
  virtual void OnClosed(int connection) = 0;

 protected:
  ~ConnectionListener() = default;
};

// One host's connection to the printer. Lives as long as an operation on its stream is pending. Runs in the one thread
// of its io_context.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // The number identifies the connection to the listener and in the trace. The references must outlive the connection.
  // The faults may change at any time.
  Connection(std::unique_ptr<ByteStream> stream, int number, const ConnectionFaults& faults, Trace& trace,
             ConnectionListener& listener);

  void Start() { Read(); }

  // Traces a received message or a note; traces and sends a message to the host, behind all earlier ones.
  void Process(const WireEvent& event);

  // Ends the connection at once.
  void Drop(const std::string& why);

 private:
  struct QueuedPiece {
    AnswerPiece piece;
    std::string text;
  };

  void Read();
  void OnReceived(std::size_t size);
  void OnHostEnded(const std::error_code& error);
  void TellHostEnded();
  void Queue(const Message& message);
  void SendNext();
  void Write();
  std::size_t CountReadyPieces() const;
  void OnWritten(std::size_t pieces);
  void Close(const std::string& why);

  const std::unique_ptr<ByteStream> stream_;
  asio::steady_timer pause_;
  const int number_;
  const ConnectionFaults& faults_;
  Trace& trace_;
  ConnectionListener& listener_;
  ReceiveLimit limit_;

  std::array<std::uint8_t, 65536> received_{};  // Large, so that firmware images pass quickly.
  std::deque<QueuedPiece> queue_;               // The front is waiting for its pause, or being written...
  Bytes outgoing_;                              // ...from here.
  bool reading_ = false;
  bool sending_ = false;
  bool host_ended_ = false;
  std::string close_reason_;  // Set if the connection closes once everything is sent.
  bool closed_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_CONNECTION_H_
