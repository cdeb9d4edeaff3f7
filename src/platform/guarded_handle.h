// The handle of a device or socket that one thread may close while others use it.
#ifndef VEXO_PLATFORM_GUARDED_HANDLE_H_
#define VEXO_PLATFORM_GUARDED_HANDLE_H_

#include <atomic>
#include <chrono>
#include <thread>

namespace vexo::platform {

// Closes the handle it owns. The system gives the number of a closed handle to whatever is opened next, another printer
// perhaps, and a thread that was a moment too late would take that printer's bytes: so closing ends the calls under way
// and waits for them. A call that comes later has no handle, and gets the system's error for it.
//
// The traits of a kind of handle: the type Handle; kNone, for no handle; Interrupt, which ends calls that wait; Close.
template <typename Traits>
class GuardedHandle {
 public:
  using Handle = typename Traits::Handle;

  GuardedHandle() = default;
  explicit GuardedHandle(Handle handle) : handle_(handle) {}
  GuardedHandle(const GuardedHandle&) = delete;
  GuardedHandle& operator=(const GuardedHandle&) = delete;
  ~GuardedHandle() { Reset(); }

  bool valid() const { return handle_ != Traits::kNone; }

  // For calls that do no harm to another one's handle.
  Handle get() const { return handle_; }

  // Closes the handle and owns another one.
  void Reset(Handle handle = Traits::kNone) { Close(Exchange(handle)); }

  // Owns another handle; the old one is the caller's to close.
  Handle Exchange(Handle handle) { return handle_.exchange(handle); }

  // Closes a handle that this object has owned. A call that nothing can interrupt loses its handle after a while.
  void Close(Handle handle) const {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds kPatience(5);
    if (handle == Traits::kNone) {
      return;
    }
    for (const Clock::time_point start = Clock::now(); uses_ != 0 && Clock::now() - start < kPatience;) {
      Traits::Interrupt(handle);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Traits::Close(handle);
  }

  // One call to the system.
  class Use {
   public:
    explicit Use(const GuardedHandle& guarded) : uses_(&guarded.uses_) {
      ++*uses_;
      handle_ = guarded.handle_;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { --*uses_; }

    Handle get() const { return handle_; }

   private:
    std::atomic<int>* const uses_;
    Handle handle_;
  };

 private:
  std::atomic<Handle> handle_{Traits::kNone};
  mutable std::atomic<int> uses_{0};
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_GUARDED_HANDLE_H_
