// A cache of kernel objects that are not in use, for the next user of the same kind.
#ifndef VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_
#define VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

#include "platform/mutex.h"
#include "platform/windows/scoped_handle.h"

namespace vexo::platform {

// Holds at most as many objects as threads have used at once; they are closed when the library is unloaded.
// Thread-safe.
class IdleHandles {
 public:
  // Returns an invalid handle when the cache is empty.
  ScopedHandle Take() {
    const std::lock_guard<Mutex> guard(mutex_);
    return count_ > 0 ? std::move(handles_[--count_]) : ScopedHandle();
  }

  // Closes the handle when the cache is full.
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
