// The TCP port: a printer on the network, usually listening on port 9100.
#ifndef VEXO_PORT_TCP_PORT_H_
#define VEXO_PORT_TCP_PORT_H_

// socket_port.h brings winsock2.h, which must come before windows.h.
#include "port/socket_port.h"

#include "platform/windows/global_text.h"

namespace vexo {

class TcpPort : public SocketPort {
 public:
  TcpPort();

  // Takes "ip" (required, -301) and "port" from the URI. -9: out of memory.
  int32_t Configure(const char* uri) override;

 protected:
  void SetAddress() override;
  SOCKET CreateSocket() override;
  int32_t SetOptions(SOCKET socket) override;
  int StartConnect(SOCKET socket) override;

 private:
  platform::GlobalText host_;
  uint32_t port_ = 0;
  sockaddr_in address_ = {};
};

}  // namespace vexo

#endif  // VEXO_PORT_TCP_PORT_H_
