// A thread of the library. The standard library's threads, as built for MinGW, allocate even to report their identifier
// or to be joined.
#ifndef VEXO_PLATFORM_THREAD_H_
#define VEXO_PLATFORM_THREAD_H_

#include <atomic>
#include <cstdint>

namespace vexo::platform {

// Not synchronised: its owner starts and joins it, one call at a time. A started thread must be joined before the
// object is destroyed.
class Thread {
 public:
  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  ~Thread() = default;

  // Runs `run(argument)`, which must not throw, on a new thread. Returns false when no thread can be created.
  bool Start(void (*run)(void*), void* argument);

  // Waits for the end of `run`. Has no effect when no thread is running. Must not be called on the thread itself.
  void Join();

  // Whether the caller runs on this thread.
  bool IsCurrent() const;

 private:
  void (*run_)(void*) = nullptr;
  void* argument_ = nullptr;
  uintptr_t system_thread_ = 0;  // Handle or identifier; valid while started_.
  bool started_ = false;
  std::atomic<uintptr_t> self_{0};  // Identifier of the running thread, set by the thread itself; 0 for none.

  friend struct ThreadEntry;
};

// Throws std::system_error (resource deadlock would occur), for a thread that would wait for itself. Does not allocate.
[[noreturn]] void ThrowDeadlock();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_THREAD_H_
