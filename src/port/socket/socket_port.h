// What socket ports share: connecting within a time limit, transfers, and reconnecting after the printer has dropped
// the connection.
//
// Compatibility: CheckOpen always returns VEXO_OK (PortDriver's default), even for a port that was never opened; a
// dropped connection is restored by the next Write.
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
  // `buffer_size` is the size of the socket's buffers and the largest piece per send.
  SocketPort(const VexoPortTimeouts& timeouts, uint32_t buffer_size)
      : DevicePort(timeouts), buffer_size_(buffer_size) {}

  // The parts specific to a kind of socket. Address returns the configured address when the port is opened.
  // CreateSocket returns an unconnected socket, or kNoSocket with the system's error set. SetOptions prepares it and
  // returns VEXO_OK or the system's error of the last failure that matters. StartConnect starts connecting it to the
  // address.
  virtual platform::SocketAddress Address() const = 0;
  virtual platform::Socket CreateSocket() = 0;
  virtual int32_t SetOptions(platform::Socket socket) = 0;
  virtual int StartConnect(platform::Socket socket, const platform::SocketAddress& address);

  // Whether the socket counts as connected without a connect.
  virtual bool IsConnectedByBinding(platform::Socket socket, const platform::SocketAddress& address);

  void SetTransferTimeouts(platform::Socket socket) const;
  uint32_t buffer_size() const { return buffer_size_; }

 private:
  // Counts Open and Close calls. The steps of one Open, Write or Read belong to the generation in which it began.
  // Close, on any thread, ends the generation; a step of an ended generation has no effect.
  using Generation = uint32_t;

  class Use;
  class WriteBudget;

  Generation BeginOpen();
  int32_t FinishOpen(Generation generation, int32_t result);
  bool HasEnded(Generation generation) const { return generation_ != generation; }
  int32_t ResultOrNotOpen(Generation generation, int32_t result) const;
  bool ReplaceSocket(Generation generation, platform::Socket socket);
  int32_t MakeSocket(Generation generation);
  int32_t Connect(Generation generation);
  int32_t ConnectOnce(Generation generation);
  int32_t AwaitConnection(Generation generation);
  int32_t Reconnect(Generation generation);
  void DropSocket(Generation generation);
  bool IsDropped(Generation generation, bool* writable) const;
  int32_t WriteAll(Generation generation, bool writable, const uint8_t* bytes, uint32_t length, uint32_t* written);
  int32_t ReadAll(Generation generation, uint8_t* bytes, uint32_t length, uint32_t* read);

  const uint32_t buffer_size_;
  platform::SocketLibrary library_;
  platform::SocketAddress address_ = {};
  platform::ScopedSocket socket_;
  platform::Mutex replace_mutex_;  // Held while the socket is replaced or dropped, never while waiting.
  std::atomic<Generation> generation_{0};
  std::atomic<bool> is_open_{false};

  // Stays true while a reconnect replaces the socket, so that an Abort on another thread is not lost in between.
  std::atomic<bool> has_socket_{false};
};

}  // namespace vexo

#endif  // VEXO_PORT_SOCKET_SOCKET_PORT_H_
