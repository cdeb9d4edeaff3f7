// Owning type for kernel handles.
#ifndef VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_
#define VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_

#include <windows.h>

#include "platform/owned_handle.h"

namespace vexo::platform {

struct KernelHandleTraits {
  using Handle = HANDLE;
  static constexpr Handle kNone = nullptr;

  static void Close(Handle handle) { CloseHandle(handle); }
};

// Both null and INVALID_HANDLE_VALUE, CreateFile's failure value, mean no handle.
class ScopedHandle : public OwnedHandle<KernelHandleTraits> {
 public:
  ScopedHandle() = default;
  explicit ScopedHandle(HANDLE handle) : OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_
