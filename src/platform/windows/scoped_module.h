// Owning type for a reference to a loaded module.
#ifndef VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_
#define VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_

#include <windows.h>

#include <utility>

namespace vexo::platform {

// Keeps a module loaded. When code of that module releases the reference, someone else must still hold one.
class ScopedModule {
 public:
  ScopedModule() = default;
  ScopedModule(ScopedModule&& other) noexcept : module_(std::exchange(other.module_, nullptr)) {}
  ScopedModule& operator=(ScopedModule&& other) noexcept {
    if (this != &other) {
      Reset();
      module_ = std::exchange(other.module_, nullptr);
    }
    return *this;
  }
  ScopedModule(const ScopedModule&) = delete;
  ScopedModule& operator=(const ScopedModule&) = delete;
  ~ScopedModule() { Reset(); }

  // Returns a reference to the module that contains `address`.
  static ScopedModule At(const void* address) {
    ScopedModule found;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const char*>(address), &found.module_);
    return found;
  }

  // Drops the reference without releasing it.
  void Release() { module_ = nullptr; }

  void Reset() {
    if (module_ != nullptr) {
      FreeLibrary(std::exchange(module_, nullptr));
    }
  }

 private:
  HMODULE module_ = nullptr;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_
