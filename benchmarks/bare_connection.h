// The least that a host needs to talk to a network printer under a time limit: the calls to the system, and nothing
// around them. What the library adds is measured against it.
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

  // select and send, in the pieces that the library uses. False: failed.
  bool Write(const std::vector<uint8_t>& bytes) const;

  // select and recv, each for all that is missing, as the library does.
  bool Read(std::vector<uint8_t>* bytes) const;

  // The look with which the library finds out, before it sends, that a printer dropped the connection.
  bool IsAlive() const;

 private:
  const SOCKET socket_;
};

}  // namespace vexo::benchmark

#endif  // VEXO_BENCHMARKS_BARE_CONNECTION_H_
