// The Bluetooth port: a paired printer, over an RFCOMM socket.
#ifndef VEXO_PORT_SOCKET_BLUETOOTH_PORT_H_
#define VEXO_PORT_SOCKET_BLUETOOTH_PORT_H_

#include <cstdint>

#include "platform/global_text.h"
#include "port/socket/socket_port.h"

namespace vexo {

class BluetoothPort : public SocketPort {
 public:
  BluetoothPort();

  // Reads "address" from the URI: hexadecimal digits without a prefix, up to the first other character. Returns
  // VEXO_ERROR_IO_SETTING when it is missing, VEXO_ERROR_OUT_OF_MEMORY.
  //
  // Compatibility: "pin" is stored, but never sent.
  int32_t Configure(const char* uri) override;

 protected:
  platform::SocketAddress Address() const override;
  platform::Socket CreateSocket() override;
  int32_t SetOptions(platform::Socket socket) override;
  bool IsConnectedByBinding(platform::Socket socket, const platform::SocketAddress& address) override;

 private:
  uint64_t target_ = 0;
  platform::GlobalText pin_;
};

}  // namespace vexo

#endif  // VEXO_PORT_SOCKET_BLUETOOTH_PORT_H_
