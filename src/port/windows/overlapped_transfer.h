// One asynchronous transfer after the other on a device that was opened for overlapped I/O.
#ifndef VEXO_PORT_WINDOWS_OVERLAPPED_TRANSFER_H_
#define VEXO_PORT_WINDOWS_OVERLAPPED_TRANSFER_H_

#include <windows.h>

#include <cstdint>

#include "platform/windows/device_handle.h"
#include "platform/windows/scoped_handle.h"

namespace vexo {

// What one call to the system brought. `error` is ERROR_SUCCESS also when the transfer was cancelled because its wait
// ran out; `bytes` then counts what had been transferred by then.
struct TransferResult {
  DWORD bytes = 0;
  DWORD error = ERROR_SUCCESS;
  bool timed_out = false;
};

// Owns the event that the transfers of one call complete on; taken for the first one.
class OverlappedTransfer {
 public:
  explicit OverlappedTransfer(const platform::DeviceHandle& device) : device_(device) {}
  OverlappedTransfer(const OverlappedTransfer&) = delete;
  OverlappedTransfer& operator=(const OverlappedTransfer&) = delete;
  ~OverlappedTransfer();

  // Starts the transfer and waits for it up to `wait_ms`; then cancels it and waits for the end of that. Until the
  // system has let go of the buffer, neither returns. When the device is closed meanwhile, ERROR_OPERATION_ABORTED.
  TransferResult Write(const uint8_t* bytes, DWORD length, DWORD wait_ms);
  TransferResult Read(uint8_t* bytes, DWORD length, DWORD wait_ms);

 private:
  bool Prepare(OVERLAPPED* overlapped);
  TransferResult Finish(HANDLE device, BOOL started, DWORD wait_ms, OVERLAPPED* overlapped);

  const platform::DeviceHandle& device_;
  platform::ScopedHandle event_;
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_OVERLAPPED_TRANSFER_H_
