// winsock2.h must come before windows.h.
#include <winsock2.h>

#include "platform/sockets.h"

#include <mstcpip.h>
#include <ws2bth.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <utility>

#include "platform/mutex.h"

namespace vexo::platform {
namespace {

static_assert(kNoSocket == static_cast<Socket>(INVALID_SOCKET) && kSocketFailure == SOCKET_ERROR);
static_assert(sizeof(SocketAddress::bytes) >= sizeof(SOCKADDR_BTH));

// Winsock counts its users. Not every system updates that count atomically: Wine may lose a count, and closes all
// sockets of the process when the count reaches zero.
Mutex g_count;

constexpr GUID kRfcommService = {0x00000003, 0x0000, 0x1000, {0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};
constexpr int kKeepAliveAttempts = 2;

SOCKET System(Socket socket) { return static_cast<SOCKET>(socket); }

int ToInt(size_t length) { return static_cast<int>(std::min<size_t>(length, std::numeric_limits<int>::max())); }

template <typename Address>
SocketAddress Store(const Address& address) {
  SocketAddress stored = {};
  std::memcpy(stored.bytes, &address, sizeof(address));
  stored.size = sizeof(address);
  return stored;
}

const sockaddr* View(const SocketAddress& address) { return reinterpret_cast<const sockaddr*>(address.bytes); }

SocketAddress MakeIpv4Address(u_long ip, uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ip;
  address.sin_port = htons(port);
  return Store(address);
}

template <typename T>
bool SetOption(Socket socket, int level, int name, T value) {
  return setsockopt(System(socket), level, name, reinterpret_cast<const char*>(&value), sizeof(value)) == 0;
}

// A set of at most one socket, for select.
struct SocketSet {
  SocketSet(Socket socket, bool holds_it) : given(holds_it ? &set : nullptr) {
    set.fd_count = holds_it ? 1 : 0;
    set.fd_array[0] = System(socket);
  }
  bool Holds(Socket socket) { return given != nullptr && FD_ISSET(System(socket), &set) != 0; }

  fd_set set;
  fd_set* const given;
};

}  // namespace

const int kSocketTimedOut = WSAETIMEDOUT;
const int kSocketReset = WSAECONNRESET;
const int kSocketWouldBlock = WSAEWOULDBLOCK;

int LastSocketError() { return WSAGetLastError(); }
void ClearSocketError() { WSASetLastError(0); }

int SocketLibrary::Start() {
  const std::lock_guard<Mutex> guard(g_count);
  if (started_) {
    return 0;
  }
  WSADATA data = {};
  const int failure = WSAStartup(MAKEWORD(2, 2), &data);
  if (failure != 0) {
    const int error = WSAGetLastError();
    return error != 0 ? error : failure;
  }
  started_ = true;
  return 0;
}

void SocketLibrary::Stop() {
  const std::lock_guard<Mutex> guard(g_count);
  if (std::exchange(started_, false)) {
    WSACleanup();
  }
}

SocketAddress Ipv4Address(const char* host, uint16_t port) { return MakeIpv4Address(inet_addr(host), port); }
SocketAddress AnyIpv4Address(uint16_t port) { return MakeIpv4Address(htonl(INADDR_ANY), port); }

SocketAddress RfcommAddress(uint64_t device, uint32_t channel) {
  static_assert(sizeof(SOCKADDR_BTH) == 30, "the address is packed");
  SOCKADDR_BTH address = {};
  address.addressFamily = AF_BTH;
  address.btAddr = device;
  address.serviceClassId = kRfcommService;
  address.port = channel;
  return Store(address);
}

Socket MakeTcpSocket() {
  return static_cast<Socket>(WSASocketA(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED));
}

Socket MakeRfcommSocket() {
  return static_cast<Socket>(WSASocketA(AF_BTH, SOCK_STREAM, BTHPROTO_RFCOMM, nullptr, 0, WSA_FLAG_OVERLAPPED));
}

Socket MakeDatagramSocket() { return static_cast<Socket>(socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)); }

bool SetNoDelay(Socket socket) { return SetOption<BOOL>(socket, IPPROTO_TCP, TCP_NODELAY, TRUE); }
bool SetSendBuffer(Socket socket, uint32_t size) { return SetOption<DWORD>(socket, SOL_SOCKET, SO_SNDBUF, size); }
bool SetReceiveBuffer(Socket socket, uint32_t size) { return SetOption<DWORD>(socket, SOL_SOCKET, SO_RCVBUF, size); }
bool SetKeepAlive(Socket socket) { return SetOption<BOOL>(socket, SOL_SOCKET, SO_KEEPALIVE, TRUE); }

bool SetKeepAliveTimes(Socket socket, uint32_t idle_ms, uint32_t interval_ms) {
  tcp_keepalive times = {/*onoff=*/1, idle_ms, interval_ms};
  DWORD returned = 0;
  for (int attempt = 0; attempt < kKeepAliveAttempts; ++attempt) {
    if (WSAIoctl(System(socket), SIO_KEEPALIVE_VALS, &times, sizeof(times), nullptr, 0, &returned, nullptr, nullptr) ==
        0) {
      return true;
    }
  }
  return false;
}

bool SetReceiveTimeout(Socket socket, uint32_t ms) { return SetOption<DWORD>(socket, SOL_SOCKET, SO_RCVTIMEO, ms); }
bool SetSendTimeout(Socket socket, uint32_t ms) { return SetOption<DWORD>(socket, SOL_SOCKET, SO_SNDTIMEO, ms); }
bool SetDontLinger(Socket socket) { return SetOption<BOOL>(socket, SOL_SOCKET, SO_DONTLINGER, TRUE); }
bool SetBroadcast(Socket socket) { return SetOption<DWORD>(socket, SOL_SOCKET, SO_BROADCAST, TRUE); }

bool SetBlocking(Socket socket, bool blocking) {
  u_long non_blocking = blocking ? 0 : 1;
  return ioctlsocket(System(socket), static_cast<long>(FIONBIO), &non_blocking) == 0;
}

int StartConnect(Socket socket, const SocketAddress& address) {
  return connect(System(socket), View(address), address.size);
}

bool Bind(Socket socket, const SocketAddress& address) {
  return bind(System(socket), View(address), address.size) == 0;
}

bool BindToPrinter(Socket socket, const SocketAddress& address) {
  constexpr int kBoundAddressSize = 16;
  return bind(System(socket), View(address), kBoundAddressSize) == 0;
}

int PendingError(Socket socket) {
  int error = 0;
  int size = sizeof(error);
  if (getsockopt(System(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == SOCKET_ERROR) {
    return WSAGetLastError();
  }
  return error;
}

int AwaitSocket(Socket socket, SocketEvents* events, int64_t limit_ms) {
  SocketSet readable(socket, events->readable);
  SocketSet writable(socket, events->writable);
  SocketSet exceptional(socket, events->exceptional);
  timeval limit = {static_cast<long>(limit_ms / 1000), static_cast<long>(limit_ms % 1000 * 1000)};
  const int count = select(0, readable.given, writable.given, exceptional.given, limit_ms < 0 ? nullptr : &limit);
  *events = {readable.Holds(socket), writable.Holds(socket), exceptional.Holds(socket)};
  return count;
}

Connecting AwaitConnection(Socket socket, int64_t limit_ms) {
  SocketEvents writable = {false, true, false};
  const int count = AwaitSocket(socket, &writable, limit_ms);
  if (count > 0) {
    return Connecting::kConnected;
  }
  return count == 0 ? Connecting::kGoesOn : Connecting::kSystemFailure;
}

int Send(Socket socket, const uint8_t* bytes, size_t length) {
  return send(System(socket), reinterpret_cast<const char*>(bytes), ToInt(length), 0);
}

int Receive(Socket socket, uint8_t* bytes, size_t length) {
  return recv(System(socket), reinterpret_cast<char*>(bytes), ToInt(length), 0);
}

int SendTo(Socket socket, const char* bytes, size_t length, const SocketAddress& address) {
  return sendto(System(socket), bytes, ToInt(length), 0, View(address), address.size);
}

bool HasBytes(Socket socket) {
  char byte = 0;
  return recv(System(socket), &byte, 1, MSG_PEEK) > 0;
}

void ShutDown(Socket socket, Direction direction) {
  shutdown(System(socket), direction == Direction::kReceive ? SD_RECEIVE : SD_BOTH);
}

std::string OwnIpv4Address() {
  constexpr size_t kHostNameSize = 1025;
  char name[kHostNameSize] = {};
  if (gethostname(name, sizeof(name)) != 0) {
    return {};
  }
  const hostent* const host = gethostbyname(name);
  if (host == nullptr || host->h_addr_list[0] == nullptr) {
    return {};
  }
  in_addr address = {};
  std::memcpy(&address, host->h_addr_list[0], sizeof(address));
  return inet_ntoa(address);
}

void SocketTraits::Close(Socket socket) { closesocket(System(socket)); }

}  // namespace vexo::platform
