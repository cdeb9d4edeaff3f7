#include "port/socket/tcp_port.h"

#include <limits>

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr VexoPortTimeouts kDefaultTimeouts = {10, 0, 2000, 0, 2000, 3000};
constexpr uint32_t kBufferSize = 8192;
constexpr uint32_t kPrinterPort = 9100;

// A printer that is switched off during a job is detected within seconds.
constexpr uint32_t kKeepAliveIdleMs = 3000;
constexpr uint32_t kKeepAliveIntervalMs = 2000;

// Compatibility: any text that is not exactly one decimal number means the default port.
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

platform::Socket TcpPort::CreateSocket() { return platform::MakeTcpSocket(); }

// Commands are small and each waits for its answer, so nothing may be delayed. Without these options the socket would
// work, but slowly or without detecting a lost printer, so their failure is reported.
int32_t TcpPort::SetOptions(platform::Socket socket) {
  int32_t failure = VEXO_OK;
  const auto require = [&failure](bool succeeded) {
    if (!succeeded) {
      failure = platform::LastSocketError();
    }
  };
  require(platform::SetNoDelay(socket));
  require(platform::SetSendBuffer(socket, buffer_size()));
  require(platform::SetReceiveBuffer(socket, buffer_size()));
  if (platform::SetKeepAlive(socket)) {
    require(platform::SetKeepAliveTimes(socket, kKeepAliveIdleMs, kKeepAliveIntervalMs));
  }
  SetTransferTimeouts(socket);
  return failure;
}

platform::SocketAddress TcpPort::Address() const {
  return platform::Ipv4Address(host_.c_str(), static_cast<uint16_t>(port_));
}

}  // namespace vexo
