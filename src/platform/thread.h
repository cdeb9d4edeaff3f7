// A thread of the library's own. The standard library's threads, as MinGW builds them, allocate also when they are only
// asked who they are or waited for.
#ifndef VEXO_PLATFORM_THREAD_H_
#define VEXO_PLATFORM_THREAD_H_

#include <atomic>
#include <cstdint>

namespace vexo::platform {

// Started and joined by its owner, on one thread at a time. A thread that was started must be joined before its object
// goes.
class Thread {
 public:
  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  ~Thread() = default;

  // Runs `run(argument)`, which must not throw, on a new thread. False: the system has none to give.
  bool Start(void (*run)(void*), void* argument);

  // Waits for the end of `run`. Nothing happens when no thread was started, or it has been joined. Not on the thread
  // itself.
  void Join();

  // Whether the caller runs on this thread.
  bool IsCurrent() const;

 private:
  void (*run_)(void*) = nullptr;
  void* argument_ = nullptr;
  uintptr_t system_thread_ = 0;  // Handle or identifier; means something while started_.
  bool started_ = false;
  std::atomic<uintptr_t> self_{0};  // The identifier of the running thread, as it knows itself; 0 for none.

  friend struct ThreadEntry;
};

// Throws std::system_error (resource deadlock would occur): a thread was to wait for its own end. Needs no memory.
[[noreturn]] void ThrowDeadlock();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_THREAD_H_
