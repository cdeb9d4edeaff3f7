// The minimal system calls for talking to a network printer with time limits. Baseline for the cost of the library.
#ifndef VEXO_BENCHMARKS_BARE_CONNECTION_H_
#define VEXO_BENCHMARKS_BARE_CONNECTION_H_

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vexo::benchmark {

class BareConnection {
 public:
  // With the socket options of the library's TCP port.
  explicit BareConnection(const std::string& tcp_port);
  BareConnection(const BareConnection&) = delete;
  BareConnection& operator=(const BareConnection&) = delete;
  ~BareConnection() { closesocket(socket_); }

  // select and send, in chunks of the library's size. @return false if it fails.
  bool Write(const std::vector<uint8_t>& bytes) const;

  // select and recv for all missing bytes, as the library does.
  bool Read(std::vector<uint8_t>* bytes) const;

  // The check by which the library detects a lost connection before it sends.
  bool IsAlive() const;

 private:
  const SOCKET socket_;
};

}  // namespace vexo::benchmark

#endif  // VEXO_BENCHMARKS_BARE_CONNECTION_H_
