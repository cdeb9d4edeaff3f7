// Performs asynchronous transfers, one at a time, on a device opened for overlapped I/O.
#ifndef VEXO_PORT_WINDOWS_OVERLAPPED_TRANSFER_H_
#define VEXO_PORT_WINDOWS_OVERLAPPED_TRANSFER_H_

#include <windows.h>

#include <cstdint>

#include "platform/windows/device_handle.h"
#include "platform/windows/scoped_handle.h"

namespace vexo {

// The result of one system call. `error` is also ERROR_SUCCESS when the transfer was cancelled after its wait; `bytes`
// then counts the bytes transferred until then.
struct TransferResult {
  DWORD bytes = 0;
  DWORD error = ERROR_SUCCESS;
  bool timed_out = false;
};

// Owns the event on which the transfers complete, acquired for the first one.
class OverlappedTransfer {
 public:
  explicit OverlappedTransfer(const platform::DeviceHandle& device) : device_(device) {}
  OverlappedTransfer(const OverlappedTransfer&) = delete;
  OverlappedTransfer& operator=(const OverlappedTransfer&) = delete;
  ~OverlappedTransfer();

  // Start a transfer, wait for it for up to `wait_ms`, then cancel it. Neither returns before the system has released
  // the buffer. ERROR_OPERATION_ABORTED when the device is closed meanwhile.
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
