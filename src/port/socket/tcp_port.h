// The TCP port: a printer on the network, usually listening on port 9100.
#ifndef VEXO_PORT_SOCKET_TCP_PORT_H_
#define VEXO_PORT_SOCKET_TCP_PORT_H_

#include <cstdint>

#include "platform/global_text.h"
#include "port/socket/socket_port.h"

namespace vexo {

class TcpPort : public SocketPort {
 public:
  TcpPort();

  // Reads "ip" and "port" from the URI. Returns VEXO_ERROR_IO_SETTING when "ip" is missing, VEXO_ERROR_OUT_OF_MEMORY.
  int32_t Configure(const char* uri) override;

 protected:
  platform::SocketAddress Address() const override;
  platform::Socket CreateSocket() override;
  int32_t SetOptions(platform::Socket socket) override;

 private:
  platform::GlobalText host_;
  uint32_t port_ = 0;
};

}  // namespace vexo

#endif  // VEXO_PORT_SOCKET_TCP_PORT_H_
