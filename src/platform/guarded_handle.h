// A device or socket handle that one thread may close while others use it.
#ifndef VEXO_PLATFORM_GUARDED_HANDLE_H_
#define VEXO_PLATFORM_GUARDED_HANDLE_H_

#include <atomic>
#include <chrono>
#include <thread>

namespace vexo::platform {

// Owns a handle. The system may give the value of a closed handle to the next device opened, perhaps another printer,
// and a late thread would then take that printer's bytes. Close therefore interrupts the calls under way and waits for
// them. A later call gets no handle, and the system's error for it.
//
// Traits: the type Handle; kNone, meaning no handle; Interrupt, which ends blocking calls; Close.
template <typename Traits>
class GuardedHandle {
 public:
  using Handle = typename Traits::Handle;

  GuardedHandle() = default;
  GuardedHandle(const GuardedHandle&) = delete;
  GuardedHandle& operator=(const GuardedHandle&) = delete;
  ~GuardedHandle() { Reset(); }

  bool valid() const { return handle_ != Traits::kNone; }

  // For calls that are harmless on a stale handle.
  Handle get() const { return handle_; }

  // Closes the handle and takes ownership of another one.
  void Reset(Handle handle = Traits::kNone) { Close(Exchange(handle)); }

  // Takes ownership of another handle; the caller closes the returned one.
  Handle Exchange(Handle handle) { return handle_.exchange(handle); }

  // Closes a handle that this object owned. Waits a limited time for calls that cannot be interrupted, then closes it
  // under them.
  void Close(Handle handle) const {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds kMaxWait(5);
    if (handle == Traits::kNone) {
      return;
    }
    for (const Clock::time_point start = Clock::now(); uses_ != 0 && Clock::now() - start < kMaxWait;) {
      Traits::Interrupt(handle);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Traits::Close(handle);
  }

  // The scope of one system call on the handle.
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
