// What ports on sockets share: connecting under a time limit, transfers, and coming back after the printer dropped the
// connection.
#ifndef VEXO_PORT_SOCKET_PORT_H_
#define VEXO_PORT_SOCKET_PORT_H_

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <atomic>
#include <cstdint>

#include "platform/windows/winsock.h"
#include "port/device_uri.h"
#include "port/port_driver.h"
#include "port/port_lock.h"

namespace vexo {

class SocketPort : public PortDriver {
 public:
  int32_t GetUri(char* buffer, uint32_t size, uint32_t* length) override;
  int32_t Open() override;
  int32_t Close() override;
  int32_t Abort() override;
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;
  int32_t GetTimeouts(VexoPortTimeouts* timeouts) override;
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;
  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;
  int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output, uint32_t output_length,
                  uint32_t* returned) override;

 protected:
  // `buffer_size`: size of the socket's buffers and largest piece per send.
  SocketPort(const VexoPortTimeouts& timeouts, uint32_t buffer_size) : timeouts_(timeouts), buffer_size_(buffer_size) {}

  // Ends a successful Configure.
  void SetConfigured(const DeviceUri& uri);

  // What a kind of socket has of its own. CreateSocket makes an unconnected socket (INVALID_SOCKET: the Winsock error
  // is set); SetOptions prepares it, 0 or the Winsock code of the last failure that matters; Connect starts connecting
  // to the printer that was configured, as connect() does.
  virtual SOCKET CreateSocket() = 0;
  virtual int32_t SetOptions(SOCKET socket) = 0;
  virtual int StartConnect(SOCKET socket) = 0;

  void SetTransferTimeouts(SOCKET socket) const;
  uint32_t buffer_size() const { return buffer_size_; }

 private:
  int32_t MakeSocket();
  int32_t Connect();
  int32_t ConnectOnce();
  int32_t AwaitConnection();
  int32_t Reconnect();
  bool IsDropped() const;

  char uri_[kUriBufferSize] = {};
  bool configured_ = false;
  AbortFlag abort_;
  VexoPortTimeouts timeouts_;
  const uint32_t buffer_size_;
  platform::WinsockUse winsock_;
  platform::ScopedSocket socket_;
  std::atomic<bool> is_open_{false};

  // Stays true while a reconnect replaces the socket, so that an Abort from another thread is not lost meanwhile.
  std::atomic<bool> has_socket_{false};
};

}  // namespace vexo

#endif  // VEXO_PORT_SOCKET_PORT_H_
