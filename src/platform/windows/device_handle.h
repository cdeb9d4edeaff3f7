// Owning type for the handles of device files.
#ifndef VEXO_PLATFORM_WINDOWS_DEVICE_HANDLE_H_
#define VEXO_PLATFORM_WINDOWS_DEVICE_HANDLE_H_

#include <windows.h>

#include "platform/guarded_handle.h"

namespace vexo::platform {

struct DeviceHandleTraits {
  using Handle = HANDLE;
  static constexpr Handle kNone = nullptr;

  static void Interrupt(Handle handle) { CancelIoEx(handle, nullptr); }
  static void Close(Handle handle) { CloseHandle(handle); }
};

using DeviceHandle = GuardedHandle<DeviceHandleTraits>;

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_DEVICE_HANDLE_H_
