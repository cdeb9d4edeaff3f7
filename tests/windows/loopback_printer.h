// A network printer on a loopback address, played by the test.
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

// The printer's end of a connection. Whatever must come is waited for with a bound that only a fault exceeds.
class Connection {
 public:
  explicit Connection(Socket socket) : socket_(std::move(socket)) {}

  // The next `length` bytes; fewer when the host closed the connection or sends no more.
  std::string Receive(size_t length);
  std::string ReceiveRest() { return Receive(SIZE_MAX); }
  void Send(const std::string& bytes);

  // Ends the connection in good order, or as a printer does that is switched off and on again.
  void Close() { socket_.Close(); }
  void Reset();

 private:
  Socket socket_;
};

enum class PrinterState {
  kListening,
  kRefusing,  // It serves another host.
};

// "127.9.x.y" for "127.9": an address that no other test run on this machine uses.
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

  // The next connection that hosts have made.
  Connection Accept();

  // Refuses connections from now on, and takes them again.
  void StopListening() { listener_.Close(); }
  void Listen();

  // Whether a host has connected that was not accepted yet.
  bool HasVisitor() const;

  // A host connects and leaves again: ends an Accept on another thread.
  void Visit() const;

 private:
  const std::string ip_;
  uint16_t port_ = 0;
  Socket listener_{INVALID_SOCKET};
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_LOOPBACK_PRINTER_H_
