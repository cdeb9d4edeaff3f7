#include "platform/sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <memory>

namespace vexo::platform {
namespace {

using Clock = std::chrono::steady_clock;

// The kernel's address of an RFCOMM socket. Its header is part of the Bluetooth stack's development files, which are
// not required.
struct RfcommSocketAddress {
  sa_family_t family;
  uint8_t device[6];  // Low byte first.
  uint8_t channel;
};
constexpr int kRfcommProtocol = 3;

// Repeats a call that was interrupted by a signal.
template <typename Call>
auto Uninterrupted(Call call) -> decltype(call()) {
  while (true) {
    const auto result = call();
    if (result != -1 || errno != EINTR) {
      return result;
    }
  }
}

size_t ToCount(size_t length) { return std::min<size_t>(length, INT_MAX); }

template <typename Address>
SocketAddress Store(const Address& address) {
  static_assert(sizeof(address) <= sizeof(SocketAddress::bytes));
  SocketAddress stored = {};
  std::memcpy(stored.bytes, &address, sizeof(address));
  stored.size = sizeof(address);
  return stored;
}

const sockaddr* View(const SocketAddress& address) { return reinterpret_cast<const sockaddr*>(address.bytes); }

SocketAddress MakeIpv4Address(in_addr_t ip, uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ip;
  address.sin_port = htons(port);
  return Store(address);
}

template <typename T>
bool SetOption(Socket socket, int level, int name, const T& value) {
  return setsockopt(static_cast<int>(socket), level, name, &value, sizeof(value)) == 0;
}

bool SetTimeout(Socket socket, int name, uint32_t milliseconds) {
  const timeval limit = {static_cast<time_t>(milliseconds / 1000),
                         static_cast<suseconds_t>(milliseconds % 1000 * 1000)};
  return SetOption(socket, SOL_SOCKET, name, limit);
}

// The kernel takes these times in seconds.
int ToSeconds(uint32_t milliseconds) { return static_cast<int>(std::max(milliseconds / 1000, 1U)); }

int64_t MillisecondsLeft(Clock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  return std::clamp<int64_t>(left, 0, INT_MAX);
}

// Polls one socket. A negative limit means no limit.
int Poll(Socket socket, short events, int64_t limit_ms, short* happened) {
  if (socket == kNoSocket) {
    errno = EBADF;  // poll would ignore it and wait.
    return kSocketFailure;
  }
  pollfd entry = {static_cast<int>(socket), events, 0};
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(std::max<int64_t>(limit_ms, 0));
  while (true) {
    const int count = poll(&entry, 1, limit_ms < 0 ? -1 : static_cast<int>(MillisecondsLeft(end)));
    if (count > 0 || (count == 0 && (limit_ms < 0 || MillisecondsLeft(end) == 0)) || (count < 0 && errno != EINTR)) {
      *happened = entry.revents;
      if (count > 0 && (entry.revents & POLLNVAL) != 0) {
        errno = EBADF;
        return kSocketFailure;
      }
      return count;
    }
  }
}

}  // namespace

const int kSocketTimedOut = EAGAIN;
const int kSocketReset = ECONNRESET;
const int kSocketWouldBlock = EAGAIN;

int LastSocketError() { return errno; }
void ClearSocketError() { errno = 0; }

int SocketLibrary::Start() {
  started_ = true;
  return 0;
}

void SocketLibrary::Stop() { started_ = false; }

SocketAddress Ipv4Address(const char* host, uint16_t port) { return MakeIpv4Address(inet_addr(host), port); }
SocketAddress AnyIpv4Address(uint16_t port) { return MakeIpv4Address(htonl(INADDR_ANY), port); }

SocketAddress RfcommAddress(uint64_t device, uint32_t channel) {
  RfcommSocketAddress address = {};
  address.family = AF_BLUETOOTH;
  for (uint8_t& byte : address.device) {
    byte = static_cast<uint8_t>(device);
    device >>= 8;
  }
  address.channel = static_cast<uint8_t>(channel);
  return Store(address);
}

Socket MakeTcpSocket() { return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP); }
Socket MakeRfcommSocket() { return socket(AF_BLUETOOTH, SOCK_STREAM | SOCK_CLOEXEC, kRfcommProtocol); }
Socket MakeDatagramSocket() { return socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP); }

bool SetNoDelay(Socket socket) { return SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1); }
bool SetSendBuffer(Socket socket, uint32_t size) { return SetOption(socket, SOL_SOCKET, SO_SNDBUF, size); }
bool SetReceiveBuffer(Socket socket, uint32_t size) { return SetOption(socket, SOL_SOCKET, SO_RCVBUF, size); }
bool SetKeepAlive(Socket socket) { return SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1); }

bool SetKeepAliveTimes(Socket socket, uint32_t idle_ms, uint32_t interval_ms) {
  return SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, ToSeconds(idle_ms)) &&
         SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, ToSeconds(interval_ms));
}

bool SetReceiveTimeout(Socket socket, uint32_t milliseconds) { return SetTimeout(socket, SO_RCVTIMEO, milliseconds); }
bool SetSendTimeout(Socket socket, uint32_t milliseconds) { return SetTimeout(socket, SO_SNDTIMEO, milliseconds); }
bool SetDontLinger(Socket socket) { return SetOption(socket, SOL_SOCKET, SO_LINGER, linger{0, 0}); }
bool SetBroadcast(Socket socket) { return SetOption(socket, SOL_SOCKET, SO_BROADCAST, 1); }

bool SetBlocking(Socket socket, bool blocking) {
  const int flags = fcntl(static_cast<int>(socket), F_GETFL);
  return flags != -1 &&
         fcntl(static_cast<int>(socket), F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK) == 0;
}

int StartConnect(Socket socket, const SocketAddress& address) {
  return connect(static_cast<int>(socket), View(address), static_cast<socklen_t>(address.size));
}

bool Bind(Socket socket, const SocketAddress& address) {
  return bind(static_cast<int>(socket), View(address), static_cast<socklen_t>(address.size)) == 0;
}

// Not supported by the Bluetooth stack of this system.
bool BindToPrinter(Socket /*socket*/, const SocketAddress& /*address*/) { return false; }

int PendingError(Socket socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  if (getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
    return errno;
  }
  return error;
}

int AwaitSocket(Socket socket, SocketEvents* events, int64_t limit_ms) {
  const auto wanted = static_cast<short>((events->readable ? POLLIN : 0) | (events->writable ? POLLOUT : 0) |
                                         (events->exceptional ? POLLPRI : 0));
  short happened = 0;
  const int count = Poll(socket, wanted, limit_ms, &happened);
  const bool ended = (happened & (POLLERR | POLLHUP)) != 0;  // The next transfer returns the reason.
  *events = {events->readable && ((happened & POLLIN) != 0 || ended),
             events->writable && ((happened & POLLOUT) != 0 || ended),
             events->exceptional && (happened & (POLLPRI | POLLERR)) != 0};
  return count;
}

Connecting AwaitConnection(Socket socket, int64_t limit_ms) {
  short happened = 0;
  const int count = Poll(socket, POLLOUT, limit_ms, &happened);
  if (count <= 0) {
    return count == 0 ? Connecting::kGoesOn : Connecting::kSystemFailure;
  }
  return (happened & (POLLERR | POLLHUP)) != 0 ? Connecting::kRefused : Connecting::kConnected;
}

int Send(Socket socket, const uint8_t* bytes, size_t length) {
  return static_cast<int>(
      Uninterrupted([=] { return send(static_cast<int>(socket), bytes, ToCount(length), MSG_NOSIGNAL); }));
}

int Receive(Socket socket, uint8_t* bytes, size_t length) {
  return static_cast<int>(Uninterrupted([=] { return recv(static_cast<int>(socket), bytes, ToCount(length), 0); }));
}

int SendTo(Socket socket, const char* bytes, size_t length, const SocketAddress& address) {
  return static_cast<int>(Uninterrupted([&] {
    return sendto(static_cast<int>(socket), bytes, ToCount(length), MSG_NOSIGNAL, View(address),
                  static_cast<socklen_t>(address.size));
  }));
}

bool HasBytes(Socket socket) {
  char byte = 0;
  return Uninterrupted([&] { return recv(static_cast<int>(socket), &byte, 1, MSG_PEEK); }) > 0;
}

// Always shuts down both directions: nothing else wakes up a thread that waits to send.
void ShutDown(Socket socket, Direction /*direction*/) { shutdown(static_cast<int>(socket), SHUT_RDWR); }

std::string OwnIpv4Address() {
  char name[HOST_NAME_MAX + 1] = {};
  if (gethostname(name, sizeof(name) - 1) != 0) {
    return {};
  }
  addrinfo hints = {};
  hints.ai_family = AF_INET;
  addrinfo* found = nullptr;
  if (getaddrinfo(name, nullptr, &hints, &found) != 0) {
    return {};
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, freeaddrinfo);
  char text[INET_ADDRSTRLEN] = {};
  const auto* const address = reinterpret_cast<const sockaddr_in*>(found->ai_addr);
  return inet_ntop(AF_INET, &address->sin_addr, text, sizeof(text)) != nullptr ? text : "";
}

void SocketTraits::Close(Socket socket) { close(static_cast<int>(socket)); }

}  // namespace vexo::platform
