// Owning type for a reference to a loaded module.
#ifndef VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_
#define VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_

#include <windows.h>

#include "platform/owned_handle.h"

namespace vexo::platform {

struct ModuleTraits {
  using Handle = HMODULE;
  static constexpr Handle kNone = nullptr;

  static void Close(Handle handle) { FreeLibrary(handle); }
};

// Keeps a module loaded. When code of that module releases the reference, someone else must still hold one.
using ScopedModule = OwnedHandle<ModuleTraits>;

// Returns a reference to the module that contains `address`.
inline ScopedModule ReferenceModuleAt(const void* address) {
  HMODULE found = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<const char*>(address), &found);
  return ScopedModule(found);
}

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SCOPED_MODULE_H_
