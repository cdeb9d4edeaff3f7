// A network printer on a loopback address, operated by the test.
#ifndef VEXO_TESTS_WINDOWS_LOOPBACK_PRINTER_H_
#define VEXO_TESTS_WINDOWS_LOOPBACK_PRINTER_H_

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <cstdint>
#include <string>
#include <utility>

namespace vexo::test {

class Socket {
 public:
  explicit Socket(SOCKET handle) : handle_(handle) {}
  Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_SOCKET)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Socket() { Close(); }

  SOCKET get() const { return handle_; }
  void Close() { closesocket(std::exchange(handle_, INVALID_SOCKET)); }

 private:
  SOCKET handle_;
};

// The printer's end of a connection. Receive gives up after 30 seconds without data, which only a fault exceeds.
class Connection {
 public:
  explicit Connection(Socket socket) : socket_(std::move(socket)) {}

  // The next `length` bytes, or fewer if the host closed the connection or sends no more.
  std::string Receive(size_t length);
  std::string ReceiveRest() { return Receive(SIZE_MAX); }
  void Send(const std::string& bytes);

  // Close ends the connection in order; Reset does it like a printer that was switched off and on.
  void Close() { socket_.Close(); }
  void Reset();

 private:
  Socket socket_;
};

enum class PrinterState {
  kListening,
  kRefusing,  // Bound, but not listening.
};

// "127.9.x.y" for "127.9", derived from the process id: parallel test runs use different addresses.
std::string OwnIp(const std::string& network);

class LoopbackPrinter {
 public:
  explicit LoopbackPrinter(PrinterState state = PrinterState::kListening, const std::string& ip = "127.0.0.1",
                           uint16_t port = 0);
  LoopbackPrinter(const LoopbackPrinter&) = delete;
  LoopbackPrinter& operator=(const LoopbackPrinter&) = delete;
  ~LoopbackPrinter();

  uint16_t port() const { return port_; }
  std::string descriptor() const { return "NET," + ip_ + ',' + std::to_string(port_); }
  std::string uri() const { return "vexo:/dev/bus/NET/DEVICE?ip=" + ip_ + "+port=" + std::to_string(port_); }

  // The next connection from a host.
  Connection Accept();

  // StopListening refuses connections, Listen accepts them again.
  void StopListening() { listener_.Close(); }
  void Listen();

  // Whether a connection waits to be accepted.
  bool HasPendingConnection() const;

  // Connects and disconnects, to end Accept on another thread.
  void ConnectOnce() const;

 private:
  const std::string ip_;
  uint16_t port_ = 0;
  Socket listener_{INVALID_SOCKET};
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_LOOPBACK_PRINTER_H_
