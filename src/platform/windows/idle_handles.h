// Kernel objects that nobody uses just now, kept for the next one who needs one of the kind.
#ifndef VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_
#define VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_

#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/mutex.h"
#include "platform/windows/scoped_handle.h"

namespace vexo::platform {

// There are never more than threads have used at once; they are closed when the library is unloaded. Safe to use from
// any thread.
class IdleHandles {
 public:
  IdleHandles() { handles_.reserve(kMost); }

  // Not valid: none is idle.
  ScopedHandle Take() {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (handles_.empty()) {
      return {};
    }
    ScopedHandle handle = std::move(handles_.back());
    handles_.pop_back();
    return handle;
  }

  void GiveBack(ScopedHandle handle) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (handle.valid() && handles_.size() < handles_.capacity()) {
      handles_.push_back(std::move(handle));  // Needs no memory; without room, the handle is closed.
    }
  }

 private:
  static constexpr size_t kMost = 64;

  platform::Mutex mutex_;
  std::vector<ScopedHandle> handles_;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_IDLE_HANDLES_H_
