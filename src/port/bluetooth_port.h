// The Bluetooth port: a paired printer, over an RFCOMM socket.
#ifndef VEXO_PORT_BLUETOOTH_PORT_H_
#define VEXO_PORT_BLUETOOTH_PORT_H_

// socket_port.h brings winsock2.h, which must come before windows.h.
#include "port/socket_port.h"

#include <ws2bth.h>

#include "platform/windows/global_text.h"

namespace vexo {

class BluetoothPort : public SocketPort {
 public:
  BluetoothPort();

  // Takes "address" (required, -301) from the URI: hexadecimal digits without a prefix, as far as they go. "pin" is
  // kept for pairing and never sent. -9: out of memory.
  int32_t Configure(const char* uri) override;

 protected:
  void SetAddress() override;
  SOCKET CreateSocket() override;
  int32_t SetOptions(SOCKET socket) override;
  bool IsConnectedByBinding(SOCKET socket) override;
  int StartConnect(SOCKET socket) override;

 private:
  uint64_t target_ = 0;
  platform::GlobalText pin_;
  SOCKADDR_BTH address_ = {};
};

}  // namespace vexo

#endif  // VEXO_PORT_BLUETOOTH_PORT_H_
