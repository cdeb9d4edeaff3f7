// Slim reader/writer locks of the system. The standard library's mutexes, as built for MinGW, allocate memory when they
// are first locked and an event when a thread first waits for them: both can fail, and neither is ever freed.
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

// Recursive: the thread that holds it may lock it again.
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
  std::atomic<uint32_t> owner_{0};  // Thread identifier, 0 for none. Only the owner can read its own identifier here.
  uint32_t depth_ = 0;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_MUTEX_H_
