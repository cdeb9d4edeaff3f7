// The system's slim locks. The standard library's mutexes, as MinGW builds them, take memory when they are first locked
// and an event when a thread first waits for them: both can fail, and neither is ever given back.
#ifndef VEXO_PLATFORM_WINDOWS_MUTEX_H_
#define VEXO_PLATFORM_WINDOWS_MUTEX_H_

#include <atomic>
#include <cstdint>

namespace vexo::platform {

// For std::lock_guard and std::unique_lock. Needs no clean-up.
class Mutex {
 public:
  constexpr Mutex() noexcept = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  ~Mutex() = default;

  void lock() noexcept;
  void unlock() noexcept;

 private:
  void* lock_ = nullptr;  // An SRWLOCK.
};

// May be locked again by the thread that holds it.
class RecursiveMutex {
 public:
  constexpr RecursiveMutex() noexcept = default;
  RecursiveMutex(const RecursiveMutex&) = delete;
  RecursiveMutex& operator=(const RecursiveMutex&) = delete;
  ~RecursiveMutex() = default;

  void lock() noexcept;
  void unlock() noexcept;

 private:
  Mutex mutex_;
  std::atomic<uint32_t> owner_{0};  // Thread identifier, 0 for none. Only the owner can find its own in it.
  uint32_t depth_ = 0;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_MUTEX_H_
