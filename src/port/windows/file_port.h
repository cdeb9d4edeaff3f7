// What serial, parallel and USB printer ports share: a device file, its state, and transfers with time limits.
#ifndef VEXO_PORT_WINDOWS_FILE_PORT_H_
#define VEXO_PORT_WINDOWS_FILE_PORT_H_

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "platform/windows/device_handle.h"
#include "port/device_port.h"
#include "port/windows/overlapped_transfer.h"

namespace vexo {

// No device sends longer packets than this.
inline constexpr uint32_t kLargestPacketSize = 255;

class FilePort : public DevicePort {
 public:
  // Returns VEXO_ERROR_IO_SETTING when not configured, VEXO_ERROR_IO_ALREADY_OPEN, or the code of ResolveDevicePath,
  // CreateFile or SetUpDevice.
  int32_t Open() override;
  int32_t Close() override;
  int32_t Abort() override;
  int32_t CheckOpen() override;
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;
  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;

 protected:
  // The parts of Open before and after resolving the device path. CheckClosed returns VEXO_ERROR_IO_SETTING when not
  // configured and VEXO_ERROR_IO_ALREADY_OPEN; OpenDeviceFile returns CreateFile's error or the code of SetUpDevice.
  int32_t CheckClosed() const;
  int32_t OpenDeviceFile();

  // With overlapped I/O every transfer waits on an event; otherwise calls block.
  enum class Mode { kOverlapped, kBlocking };

  explicit FilePort(Mode mode);

  // Called before the device is opened. Fills device_path_ when the URI only describes the device.
  virtual int32_t ResolveDevicePath();

  // Prepares the device just opened. On failure the port stays closed.
  virtual int32_t SetUpDevice(HANDLE device);

  // Read without overlapped I/O. The default is a single system call.
  virtual int32_t ReadBlocking(uint8_t* bytes, uint32_t length, uint32_t* read);
  virtual int32_t ReadAvailableBlocking(uint8_t* bytes, uint32_t length, uint32_t* read);

  // For devices that send whole packets that must not be split: the size of the reads that serve a request for `length`
  // bytes, at most kLargestPacketSize. 0: read `length` bytes directly.
  virtual uint32_t ReadPacketSize(uint32_t length) const;
  virtual uint32_t ReadAvailablePacketSize(uint32_t length) const;

  // A single blocking call.
  TransferResult ReadOnce(uint8_t* bytes, uint32_t length);

  uint32_t chunk_size() const { return chunk_size_; }

  char device_path_[MAX_PATH] = {};

 private:
  TransferResult WriteOnce(OverlappedTransfer* transfer, const uint8_t* bytes, uint32_t length, uint32_t wait_ms);
  int32_t ReadOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read);
  int32_t ReadAvailableOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read);

  const Mode mode_;
  const uint32_t chunk_size_ = 4096;  // Largest piece per system call.
  std::atomic<bool> is_open_{false};
  platform::DeviceHandle handle_;
};

// Set and get a flag in the form of Control.
int32_t SetFlag(const uint8_t* input, uint32_t input_length, uint8_t* flag);
int32_t GetFlag(uint8_t flag, uint8_t* output, uint32_t output_length, uint32_t* returned);

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_FILE_PORT_H_
