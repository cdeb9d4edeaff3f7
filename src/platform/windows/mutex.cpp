#include "platform/windows/mutex.h"

#include <windows.h>

namespace vexo::platform {
namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && alignof(SRWLOCK) == alignof(void*), "the lock is one pointer");

SRWLOCK* SlimLock(void** lock) { return reinterpret_cast<SRWLOCK*>(lock); }

}  // namespace

void Mutex::lock() noexcept { AcquireSRWLockExclusive(SlimLock(&lock_)); }

void Mutex::unlock() noexcept { ReleaseSRWLockExclusive(SlimLock(&lock_)); }

void RecursiveMutex::lock() noexcept {
  const DWORD self = GetCurrentThreadId();
  if (owner_.load(std::memory_order_relaxed) != self) {
    mutex_.lock();
    owner_.store(self, std::memory_order_relaxed);
  }
  ++depth_;
}

void RecursiveMutex::unlock() noexcept {
  if (--depth_ == 0) {
    owner_.store(0, std::memory_order_relaxed);
    mutex_.unlock();
  }
}

}  // namespace vexo::platform
