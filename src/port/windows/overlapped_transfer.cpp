#include "port/windows/overlapped_transfer.h"

#include <utility>

#include "platform/windows/idle_handles.h"
#include "platform/windows/wait.h"

namespace vexo {
namespace {

using Use = platform::DeviceHandle::Use;

// Creating an event for each command would cost as much as sending it.
platform::IdleHandles g_idle_events;

TransferResult Failure(DWORD error) {
  TransferResult result;
  result.error = error;
  return result;
}

}  // namespace

OverlappedTransfer::~OverlappedTransfer() { g_idle_events.GiveBack(std::move(event_)); }

bool OverlappedTransfer::Prepare(OVERLAPPED* overlapped) {
  if (!event_.valid()) {
    event_ = g_idle_events.Take();
  }
  if (!event_.valid()) {
    event_ = platform::ScopedHandle(CreateEventA(nullptr, /*bManualReset=*/TRUE, /*bInitialState=*/FALSE, nullptr));
  }
  overlapped->hEvent = event_.get();
  return event_.valid() && ResetEvent(event_.get()) != 0;
}

TransferResult OverlappedTransfer::Write(const uint8_t* bytes, DWORD length, DWORD wait_ms) {
  OVERLAPPED overlapped = {};
  if (!Prepare(&overlapped)) {
    return Failure(GetLastError());
  }
  const Use device(device_);
  return Finish(device.get(), WriteFile(device.get(), bytes, length, nullptr, &overlapped), wait_ms, &overlapped);
}

TransferResult OverlappedTransfer::Read(uint8_t* bytes, DWORD length, DWORD wait_ms) {
  OVERLAPPED overlapped = {};
  if (!Prepare(&overlapped)) {
    return Failure(GetLastError());
  }
  const Use device(device_);
  return Finish(device.get(), ReadFile(device.get(), bytes, length, nullptr, &overlapped), wait_ms, &overlapped);
}

TransferResult OverlappedTransfer::Finish(HANDLE device, BOOL started, DWORD wait_ms, OVERLAPPED* overlapped) {
  TransferResult result;
  if (started == FALSE) {
    const DWORD start_error = GetLastError();
    if (start_error != ERROR_IO_PENDING) {
      return Failure(start_error);
    }
    const DWORD waited = platform::WaitForHandle(event_.get(), wait_ms);
    if (waited != WAIT_OBJECT_0) {
      const DWORD wait_error = waited == WAIT_TIMEOUT ? ERROR_SUCCESS : GetLastError();
      CancelIo(device);
      platform::WaitForHandle(event_.get(), INFINITE);
      result.timed_out = waited == WAIT_TIMEOUT;
      result.error = wait_error;
    }
  }
  // Waits until the system has released the buffer.
  if (GetOverlappedResult(device, overlapped, &result.bytes, /*bWait=*/TRUE) == 0) {
    const DWORD error = GetLastError();
    const bool cancelled_by_us = result.timed_out && error == ERROR_OPERATION_ABORTED;
    const bool ended_by_the_line =
        error == ERROR_TIMEOUT;  // The line's own time limit: not a failure, but no more bytes.
    if (!cancelled_by_us && !ended_by_the_line && result.error == ERROR_SUCCESS) {
      result.error = error;
    }
  }
  return result;
}

}  // namespace vexo
