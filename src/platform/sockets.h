// The door to the system's sockets: what the ports and the network scan ask of them. Results and errors are the
// system's own; only what differs between systems is named here.
#ifndef VEXO_PLATFORM_SOCKETS_H_
#define VEXO_PLATFORM_SOCKETS_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/guarded_handle.h"

namespace vexo::platform {

using Socket = intptr_t;
inline constexpr Socket kNoSocket = -1;

// What a call that failed returns; LastSocketError() tells why. Set and read by the calling thread.
inline constexpr int kSocketFailure = -1;
int LastSocketError();
void ClearSocketError();

// Errors that callers treat in a way of their own.
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

  // 0, or the system's error. Starting twice changes nothing.
  int Start();
  void Stop();

 private:
  bool started_ = false;
};

// An address of any kind of socket, as the system lays it out.
struct SocketAddress {
  alignas(8) unsigned char bytes[32];
  int size;
};

// `host`: dotted, in the system's reading; any other text gives the broadcast address of the local network.
SocketAddress Ipv4Address(const char* host, uint16_t port);
SocketAddress AnyIpv4Address(uint16_t port);
SocketAddress RfcommAddress(uint64_t device, uint32_t channel);

// Unconnected sockets, or kNoSocket.
Socket MakeTcpSocket();
Socket MakeRfcommSocket();
Socket MakeDatagramSocket();

// False: the system refuses; LastSocketError() tells why. Sizes are in bytes, times in milliseconds.
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

// 0: connected. With a socket that does not block, connecting goes on after a failure; AwaitConnection tells its end.
int StartConnect(Socket socket, const SocketAddress& address);

// How connecting came out. Some systems do not tell a refusal from an answer that is still awaited.
enum class Connecting {
  kConnected,      // Unless PendingError says otherwise.
  kGoesOn,         // Not connected in time.
  kRefused,        // By the printer or the network; before the time is over.
  kSystemFailure,  // LastSocketError() tells why.
};
Connecting AwaitConnection(Socket socket, int64_t limit_ms);
bool Bind(Socket socket, const SocketAddress& address);

// Some Bluetooth stacks connect a socket that is bound to a printer's address.
bool BindToPrinter(Socket socket, const SocketAddress& address);

// The error that the system has noted for the socket, 0 for none.
int PendingError(Socket socket);

// What a socket is waited for, and what has come.
struct SocketEvents {
  bool readable = false;
  bool writable = false;
  bool exceptional = false;  // Also a connection that failed.
};

// Waits for one of the events in *events, and leaves in it those that have come. A negative limit waits without end.
// More than 0: one has come; 0: none in time; kSocketFailure.
inline constexpr int64_t kNoLimit = -1;
int AwaitSocket(Socket socket, SocketEvents* events, int64_t limit_ms);

// The count of bytes, or kSocketFailure. Never more than INT_MAX bytes at once.
int Send(Socket socket, const uint8_t* bytes, size_t length);
int Receive(Socket socket, uint8_t* bytes, size_t length);
int SendTo(Socket socket, const char* bytes, size_t length, const SocketAddress& address);

// Whether the connection still stands, of a socket that is readable: bytes are there, and not its end.
bool HasBytes(Socket socket);

enum class Direction {
  kReceive,
  kBoth,
};
void ShutDown(Socket socket, Direction direction);

// The first IPv4 address that belongs to this machine's name, dotted; empty when the system does not tell.
std::string OwnIpv4Address();

struct SocketTraits {
  using Handle = Socket;
  static constexpr Handle kNone = kNoSocket;

  static void Interrupt(Handle /*socket*/) {}  // Shutting it down has done that.
  static void Close(Handle socket);
};

class ScopedSocket : public GuardedHandle<SocketTraits> {
 public:
  // Closes the socket. `direction` is ended before.
  void ShutDown(Direction direction) { ShutDown(Exchange(kNoSocket), direction); }

  // Closes a socket that this object has owned.
  void ShutDown(Socket old, Direction direction) const {
    if (old != kNoSocket) {
      platform::ShutDown(old, direction);
      Close(old);
    }
  }
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_SOCKETS_H_
