#include "port/bluetooth_port.h"

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr VexoPortTimeouts kDefaultTimeouts = {10, 0, 2000, 0, 2000, 2000};
constexpr uint32_t kBufferSize = 4096;
constexpr ULONG kRfcommChannel = 1;
constexpr GUID kRfcommService = {0x00000003, 0x0000, 0x1000, {0x80, 0x00, 0x00, 0x80, 0x5F, 0x9B, 0x34, 0xFB}};
constexpr int kBoundAddressSize = 16;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

uint64_t ReadHexNumber(const char* text) {
  uint64_t number = 0;
  for (int digit = HexDigit(*text); digit >= 0; digit = HexDigit(*++text)) {
    number = number << 4 | static_cast<uint64_t>(digit);
  }
  return number;
}

}  // namespace

BluetoothPort::BluetoothPort() : SocketPort(kDefaultTimeouts, kBufferSize) {}

int32_t BluetoothPort::Configure(const char* uri) {
  DeviceUri parsed;
  const int32_t result = ParseDeviceUri(&parsed, uri);
  if (result != VEXO_OK) {
    return result;
  }
  const char* const address = FindUriParameter(parsed, "address");
  if (address == nullptr || *address == '\0') {
    return VEXO_ERROR_IO_SETTING;
  }
  const char* const pin = FindUriParameter(parsed, "pin");
  if (!pin_.Assign(pin != nullptr ? pin : "")) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
  target_ = ReadHexNumber(address);
  SetConfigured(parsed);
  return VEXO_OK;
}

void BluetoothPort::SetAddress() {
  address_ = {};
  address_.addressFamily = AF_BTH;
  address_.btAddr = target_;
  address_.serviceClassId = kRfcommService;
  address_.port = kRfcommChannel;
}

SOCKET BluetoothPort::CreateSocket() {
  return WSASocketA(AF_BTH, SOCK_STREAM, BTHPROTO_RFCOMM, nullptr, 0, WSA_FLAG_OVERLAPPED);
}

// Bluetooth stacks lack one option or another, and the port works without.
int32_t BluetoothPort::SetOptions(SOCKET socket) {
  const BOOL dont_linger = TRUE;
  const DWORD size = buffer_size();
  setsockopt(socket, SOL_SOCKET, SO_DONTLINGER, reinterpret_cast<const char*>(&dont_linger), sizeof(dont_linger));
  setsockopt(socket, SOL_SOCKET, SO_SNDBUF, reinterpret_cast<const char*>(&size), sizeof(size));
  SetTransferTimeouts(socket);
  return VEXO_OK;
}

// Kept: where the stack binds a socket to a printer's address, that printer is taken for connected.
bool BluetoothPort::IsConnectedByBinding(SOCKET socket) {
  return bind(socket, reinterpret_cast<const sockaddr*>(&address_), kBoundAddressSize) == 0;
}

int BluetoothPort::StartConnect(SOCKET socket) {
  static_assert(sizeof(address_) == 30, "the address is packed");
  return connect(socket, reinterpret_cast<const sockaddr*>(&address_), sizeof(address_));
}

}  // namespace vexo
