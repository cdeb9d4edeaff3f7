// The system's socket functions, as used by the ports and the network scan. Results and error codes are the system's.
#ifndef VEXO_PLATFORM_SOCKETS_H_
#define VEXO_PLATFORM_SOCKETS_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/guarded_handle.h"

namespace vexo::platform {

using Socket = intptr_t;
inline constexpr Socket kNoSocket = -1;

// The return value of a failed call; LastSocketError() gives the reason. Errors are per thread.
inline constexpr int kSocketFailure = -1;
int LastSocketError();
void ClearSocketError();

// Errors that callers handle specially.
extern const int kSocketTimedOut;
extern const int kSocketReset;
extern const int kSocketWouldBlock;

// The library's use of the system's sockets, from Start to Stop.
class SocketLibrary {
 public:
  SocketLibrary() = default;
  SocketLibrary(const SocketLibrary&) = delete;
  SocketLibrary& operator=(const SocketLibrary&) = delete;
  ~SocketLibrary() { Stop(); }

  // Returns 0 or the system's error. A second Start has no effect.
  int Start();
  void Stop();

 private:
  bool started_ = false;
};

// The address of any kind of socket, in the system's layout.
struct SocketAddress {
  alignas(8) unsigned char bytes[32];
  int size;
};

// `host` is dotted and parsed by the system; any other text gives the broadcast address of the local network.
SocketAddress Ipv4Address(const char* host, uint16_t port);
SocketAddress AnyIpv4Address(uint16_t port);
SocketAddress RfcommAddress(uint64_t device, uint32_t channel);

// Return an unconnected socket, or kNoSocket.
Socket MakeTcpSocket();
Socket MakeRfcommSocket();
Socket MakeDatagramSocket();

// Return false on failure; LastSocketError() gives the reason. Sizes are in bytes, times in milliseconds.
bool SetNoDelay(Socket socket);
bool SetSendBuffer(Socket socket, uint32_t size);
bool SetReceiveBuffer(Socket socket, uint32_t size);
bool SetKeepAlive(Socket socket);
bool SetKeepAliveTimes(Socket socket, uint32_t idle_ms, uint32_t interval_ms);
bool SetReceiveTimeout(Socket socket, uint32_t milliseconds);
bool SetSendTimeout(Socket socket, uint32_t milliseconds);
bool SetDontLinger(Socket socket);
bool SetBroadcast(Socket socket);
bool SetBlocking(Socket socket, bool blocking);

// Returns 0 when connected. On a non-blocking socket, connecting continues after a failure; AwaitConnection reports its
// end.
int StartConnect(Socket socket, const SocketAddress& address);

// The outcome of connecting. Some systems report a refusal only by letting the time limit expire.
enum class Connecting {
  kConnected,      // Or failed; see PendingError.
  kGoesOn,         // Not connected in time.
  kRefused,        // By the printer or the network, before the time limit.
  kSystemFailure,  // See LastSocketError().
};
Connecting AwaitConnection(Socket socket, int64_t limit_ms);

bool Bind(Socket socket, const SocketAddress& address);

// Compatibility: binds with the address length that Bluetooth stacks in the field expect (16 of 30 bytes). Some of
// these stacks connect a socket that is bound to a printer's address.
bool BindToPrinter(Socket socket, const SocketAddress& address);

// Returns the pending error of the socket, or 0.
int PendingError(Socket socket);

// The events to wait for, and those that occurred.
struct SocketEvents {
  bool readable = false;
  bool writable = false;
  bool exceptional = false;  // Includes a failed connection attempt.
};

// Waits for one of the events in *events and replaces them by those that occurred. A negative limit means no limit.
// Returns a positive value when an event occurred, 0 after the limit, or kSocketFailure.
inline constexpr int64_t kNoLimit = -1;
int AwaitSocket(Socket socket, SocketEvents* events, int64_t limit_ms);

// Return the number of bytes, at most INT_MAX per call, or kSocketFailure.
int Send(Socket socket, const uint8_t* bytes, size_t length);
int Receive(Socket socket, uint8_t* bytes, size_t length);
int SendTo(Socket socket, const char* bytes, size_t length, const SocketAddress& address);

// For a readable socket: whether it has data and not the end of the connection.
bool HasBytes(Socket socket);

enum class Direction {
  kReceive,
  kBoth,
};
void ShutDown(Socket socket, Direction direction);

// Returns the first IPv4 address of this machine's host name, dotted, or an empty string.
std::string OwnIpv4Address();

struct SocketTraits {
  using Handle = Socket;
  static constexpr Handle kNone = kNoSocket;

  static void Interrupt(Handle /*socket*/) {}  // Shutting the socket down has interrupted its calls.
  static void Close(Handle socket);
};

class ScopedSocket : public GuardedHandle<SocketTraits> {
 public:
  // Shuts the socket down in `direction` and closes it.
  void ShutDown(Direction direction) { ShutDown(Exchange(kNoSocket), direction); }

  // The same for a socket that this object owned.
  void ShutDown(Socket old, Direction direction) const {
    if (old != kNoSocket) {
      platform::ShutDown(old, direction);
      Close(old);
    }
  }
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_SOCKETS_H_
