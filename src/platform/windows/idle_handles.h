// Kernel objects that nobody uses just now, kept for the next one who needs one of the kind.
#ifndef VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_
#define VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

#include "platform/mutex.h"
#include "platform/windows/scoped_handle.h"

namespace vexo::platform {

// There are never more than threads have used at once; they are closed when the library is unloaded. Safe to use from
// any thread.
class IdleHandles {
 public:
  // Not valid: none is idle.
  ScopedHandle Take() {
    const std::lock_guard<Mutex> guard(mutex_);
    return count_ > 0 ? std::move(handles_[--count_]) : ScopedHandle();
  }

  // Without room, the handle is closed.
  void GiveBack(ScopedHandle handle) {
    const std::lock_guard<Mutex> guard(mutex_);
    if (handle.valid() && count_ < handles_.size()) {
      handles_[count_++] = std::move(handle);
    }
  }

 private:
  static constexpr size_t kMost = 64;

  Mutex mutex_;
  std::array<ScopedHandle, kMost> handles_;
  size_t count_ = 0;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_
