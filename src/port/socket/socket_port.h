// What ports on sockets share: connecting under a time limit, transfers, and coming back after the printer dropped the
// connection.
#ifndef VEXO_PORT_SOCKET_SOCKET_PORT_H_
#define VEXO_PORT_SOCKET_SOCKET_PORT_H_

#include <atomic>
#include <cstdint>

#include "platform/mutex.h"
#include "platform/sockets.h"
#include "port/device_port.h"

namespace vexo {

class SocketPort : public DevicePort {
 public:
  int32_t Open() override;
  int32_t Close() override;
  int32_t Abort() override;
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;
  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;

 protected:
  // `buffer_size`: size of the socket's buffers and largest piece per send.
  SocketPort(const VexoPortTimeouts& timeouts, uint32_t buffer_size)
      : DevicePort(timeouts), buffer_size_(buffer_size) {}

  // What a kind of socket has of its own. Address is the printer's as it was configured, taken when the port is opened.
  // CreateSocket makes an unconnected socket (kNoSocket: the system's error is set); SetOptions prepares it, 0 or the
  // system's error of the last failure that matters; StartConnect starts connecting it to the address.
  virtual platform::SocketAddress Address() const = 0;
  virtual platform::Socket CreateSocket() = 0;
  virtual int32_t SetOptions(platform::Socket socket) = 0;
  virtual int StartConnect(platform::Socket socket, const platform::SocketAddress& address);

  // Whether the socket counts as connected without connecting it.
  virtual bool IsConnectedByBinding(platform::Socket socket, const platform::SocketAddress& address);

  void SetTransferTimeouts(platform::Socket socket) const;
  uint32_t buffer_size() const { return buffer_size_; }

 private:
  // What the steps of one call of Open, Write or Read belong to: from an Open to the next Close, which may come from
  // another thread at any time. A step that finds its opening over does nothing any more.
  using Opening = uint32_t;

  class Use;
  class WriteBudget;

  Opening BeginOpening();
  int32_t EndOpening(Opening opening, int32_t result);
  bool IsOver(Opening opening) const { return opening_ != opening; }
  int32_t Judge(Opening opening, int32_t result) const;
  bool PutInPlace(Opening opening, platform::Socket socket);
  int32_t MakeSocket(Opening opening);
  int32_t Connect(Opening opening);
  int32_t ConnectOnce(Opening opening);
  int32_t AwaitConnection(Opening opening);
  int32_t Reconnect(Opening opening);
  void DropSocket(Opening opening);
  bool IsDropped(Opening opening, bool* writable) const;
  int32_t WriteAll(Opening opening, bool writable, const uint8_t* bytes, uint32_t length, uint32_t* written);
  int32_t ReadAll(Opening opening, uint8_t* bytes, uint32_t length, uint32_t* read);

  const uint32_t buffer_size_;
  platform::SocketLibrary library_;
  platform::SocketAddress address_ = {};
  platform::ScopedSocket socket_;
  platform::Mutex
      replacing_;  // Held while the socket is replaced, by a reconnect or for good, and never while waiting.
  std::atomic<Opening> opening_{0};
  std::atomic<bool> is_open_{false};

  // Stays true while a reconnect replaces the socket, so that an Abort from another thread is not lost meanwhile.
  std::atomic<bool> has_socket_{false};
};

}  // namespace vexo

#endif  // VEXO_PORT_SOCKET_SOCKET_PORT_H_
