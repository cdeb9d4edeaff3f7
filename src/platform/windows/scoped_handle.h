// Owning type for kernel handles.
#ifndef VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_
#define VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_

#include <windows.h>

#include <utility>

namespace vexo::platform {

// Closes the handle it owns. Both null and INVALID_HANDLE_VALUE, CreateFile's failure value, mean no handle.
class ScopedHandle {
 public:
  ScopedHandle() = default;
  explicit ScopedHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ScopedHandle(ScopedHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  ScopedHandle& operator=(ScopedHandle&& other) noexcept {
    if (this != &other) {
      Reset();
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }
  ScopedHandle(const ScopedHandle&) = delete;
  ScopedHandle& operator=(const ScopedHandle&) = delete;
  ~ScopedHandle() { Reset(); }

  bool valid() const { return handle_ != nullptr; }
  HANDLE get() const { return handle_; }

  HANDLE Release() { return std::exchange(handle_, nullptr); }

  void Reset() {
    if (handle_ != nullptr) {
      CloseHandle(std::exchange(handle_, nullptr));
    }
  }

 private:
  HANDLE handle_ = nullptr;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SCOPED_HANDLE_H_
