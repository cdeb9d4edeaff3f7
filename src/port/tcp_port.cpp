#include "port/tcp_port.h"

#include <mstcpip.h>

#include <limits>

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr VexoPortTimeouts kDefaultTimeouts = {10, 0, 2000, 0, 2000, 3000};
constexpr uint32_t kBufferSize = 8192;
constexpr uint32_t kPrinterPort = 9100;

// A printer that is switched off in the middle of a job is noticed within seconds.
constexpr tcp_keepalive kKeepAlive = {/*onoff=*/1, /*keepalivetime=*/3000, /*keepaliveinterval=*/2000};
constexpr int kKeepAliveAttempts = 2;

// The text must be one decimal number and nothing else; printers listen on 9100 unless told otherwise.
uint32_t ReadPortNumber(const char* text) {
  if (text == nullptr || *text == '\0') {
    return kPrinterPort;
  }
  uint64_t number = 0;
  for (; *text != '\0'; ++text) {
    if (*text < '0' || *text > '9') {
      return kPrinterPort;
    }
    number = number * 10 + static_cast<uint64_t>(*text - '0');
    if (number > std::numeric_limits<uint32_t>::max()) {
      return kPrinterPort;
    }
  }
  return static_cast<uint32_t>(number);
}

template <typename T>
bool SetOption(SOCKET socket, int level, int name, T value) {
  return setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof(value)) == 0;
}

bool SetKeepAliveTimes(SOCKET socket) {
  tcp_keepalive times = kKeepAlive;
  DWORD returned = 0;
  for (int attempt = 0; attempt < kKeepAliveAttempts; ++attempt) {
    if (WSAIoctl(socket, SIO_KEEPALIVE_VALS, &times, sizeof(times), nullptr, 0, &returned, nullptr, nullptr) == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace

TcpPort::TcpPort() : SocketPort(kDefaultTimeouts, kBufferSize) {}

int32_t TcpPort::Configure(const char* uri) {
  DeviceUri parsed;
  const int32_t result = ParseDeviceUri(&parsed, uri);
  if (result != VEXO_OK) {
    return result;
  }
  const char* const ip = FindUriParameter(parsed, "ip");
  if (ip == nullptr || *ip == '\0') {
    return VEXO_ERROR_IO_SETTING;
  }
  if (!host_.Assign(ip)) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
  port_ = ReadPortNumber(FindUriParameter(parsed, "port"));
  SetConfigured(parsed);
  return VEXO_OK;
}

SOCKET TcpPort::CreateSocket() {
  return WSASocketA(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED);
}

// Commands are small and each waits for its answer, so nothing may be held back. A socket that cannot be set up so
// would work, but slowly or without noticing a lost printer: the failure is reported.
int32_t TcpPort::SetOptions(SOCKET socket) {
  int32_t failure = VEXO_OK;
  const auto require = [&failure](bool succeeded) {
    if (!succeeded) {
      failure = WSAGetLastError();
    }
  };
  require(SetOption<BOOL>(socket, IPPROTO_TCP, TCP_NODELAY, TRUE));
  require(SetOption<DWORD>(socket, SOL_SOCKET, SO_SNDBUF, buffer_size()));
  require(SetOption<DWORD>(socket, SOL_SOCKET, SO_RCVBUF, buffer_size()));
  if (SetOption<BOOL>(socket, SOL_SOCKET, SO_KEEPALIVE, TRUE)) {
    require(SetKeepAliveTimes(socket));
  }
  SetTransferTimeouts(socket);
  return failure;
}

void TcpPort::SetAddress() {
  address_ = {};
  address_.sin_family = AF_INET;
  address_.sin_addr.s_addr = inet_addr(host_.c_str());
  address_.sin_port = htons(static_cast<u_short>(port_));
}

int TcpPort::StartConnect(SOCKET socket) {
  return connect(socket, reinterpret_cast<const sockaddr*>(&address_), sizeof(address_));
}

}  // namespace vexo
