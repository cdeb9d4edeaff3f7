// Owning type for the handles of the system, parametrised by how they are closed.
#ifndef VEXO_PLATFORM_OWNED_HANDLE_H_
#define VEXO_PLATFORM_OWNED_HANDLE_H_

#include <utility>

namespace vexo::platform {

// Traits as those of GuardedHandle: the type Handle; kNone, for no handle; Close.
template <typename Traits>
class OwnedHandle {
 public:
  using Handle = typename Traits::Handle;

  OwnedHandle() = default;
  explicit OwnedHandle(Handle handle) : handle_(handle) {}
  OwnedHandle(OwnedHandle&& other) noexcept : handle_(other.Release()) {}
  OwnedHandle& operator=(OwnedHandle&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  OwnedHandle(const OwnedHandle&) = delete;
  OwnedHandle& operator=(const OwnedHandle&) = delete;
  ~OwnedHandle() { Reset(); }

  bool valid() const { return handle_ != Traits::kNone; }
  Handle get() const { return handle_; }

  // Gives the handle away without closing it.
  Handle Release() { return std::exchange(handle_, Traits::kNone); }

  // Closes the handle and owns another one.
  void Reset(Handle handle = Traits::kNone) {
    const Handle old = std::exchange(handle_, handle);
    if (old != Traits::kNone) {
      Traits::Close(old);
    }
  }

 private:
  Handle handle_ = Traits::kNone;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_OWNED_HANDLE_H_
