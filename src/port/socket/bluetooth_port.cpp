#include "port/socket/bluetooth_port.h"

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr VexoPortTimeouts kDefaultTimeouts = {10, 0, 2000, 0, 2000, 2000};
constexpr uint32_t kBufferSize = 4096;
constexpr uint32_t kRfcommChannel = 1;

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

platform::SocketAddress BluetoothPort::Address() const { return platform::RfcommAddress(target_, kRfcommChannel); }

platform::Socket BluetoothPort::CreateSocket() { return platform::MakeRfcommSocket(); }

// Failures are ignored: Bluetooth stacks lack one option or another, and the port works without them.
int32_t BluetoothPort::SetOptions(platform::Socket socket) {
  platform::SetDontLinger(socket);
  platform::SetSendBuffer(socket, buffer_size());
  SetTransferTimeouts(socket);
  return VEXO_OK;
}

// Compatibility: a socket that can be bound to a printer's address counts as connected, without a connect.
bool BluetoothPort::IsConnectedByBinding(platform::Socket socket, const platform::SocketAddress& address) {
  return platform::BindToPrinter(socket, address);
}

}  // namespace vexo
