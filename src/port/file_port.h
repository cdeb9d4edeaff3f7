// What serial, parallel and USB printer ports share: a device file, its state, and the transfers with their time
// limits.
#ifndef VEXO_PORT_FILE_PORT_H_
#define VEXO_PORT_FILE_PORT_H_

#include <windows.h>

#include <cstdint>

#include "platform/windows/scoped_handle.h"
#include "port/device_uri.h"
#include "port/overlapped_transfer.h"
#include "port/port_driver.h"
#include "port/port_lock.h"

namespace vexo {

class FilePort : public PortDriver {
 public:
  int32_t GetUri(char* buffer, uint32_t size, uint32_t* length) override;

  // -301 not configured; -310 open already; else CreateFile's error.
  int32_t Open() override;
  int32_t Close() override;
  int32_t Abort() override;
  int32_t CheckOpen() override;
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;
  int32_t GetTimeouts(VexoPortTimeouts* timeouts) override;
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;
  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;
  int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output, uint32_t output_length,
                  uint32_t* returned) override;

 protected:
  // With overlapped I/O every transfer waits on an event; without it, calls block.
  enum class Mode { kOverlapped, kBlocking };

  explicit FilePort(Mode mode) : mode_(mode) {}

  // Ends a successful Configure.
  void SetConfigured(const DeviceUri& uri);
  bool configured() const { return configured_; }

  // Reads without overlapped I/O. The plain form is one call to the system.
  virtual int32_t ReadBlocking(uint8_t* bytes, uint32_t length, uint32_t* read);
  virtual int32_t ReadAvailableBlocking(uint8_t* bytes, uint32_t length, uint32_t* read);

  // Size of the reads with which a request for only `length` bytes is served, where the device sends whole packets that
  // must not be cut; 0: the request itself goes to the system.
  virtual uint32_t ReadPacketSize(uint32_t length) const;
  virtual uint32_t ReadAvailablePacketSize(uint32_t length) const;

  // One blocking call.
  TransferResult ReadOnce(uint8_t* bytes, uint32_t length);

  const VexoPortTimeouts& timeouts() const { return timeouts_; }
  bool IsAborted() const { return abort_.IsSet(); }

  char device_path_[MAX_PATH] = {};

 private:
  TransferResult WriteOnce(OverlappedTransfer* transfer, const uint8_t* bytes, uint32_t length, uint32_t wait_ms);
  int32_t ReadOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read);
  int32_t ReadAvailableOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read);

  const Mode mode_;
  bool configured_ = false;
  char uri_[kUriBufferSize] = {};
  bool is_open_ = false;
  AbortFlag abort_;
  VexoPortTimeouts timeouts_ = {10, 5, 2000, 10, 2000, 1000};
  uint32_t chunk_size_ = 4096;  // Largest piece given to the system at once.
  platform::ScopedHandle handle_;
};

// The common form of Control's small settings.
int32_t SetFlag(const uint8_t* input, uint32_t input_length, uint8_t* flag);
int32_t GetFlag(uint8_t flag, uint8_t* output, uint32_t output_length, uint32_t* returned);

}  // namespace vexo

#endif  // VEXO_PORT_FILE_PORT_H_
