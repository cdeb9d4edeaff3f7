#include "platform/global_text.h"

#include <windows.h>

namespace vexo::platform {

void* AllocateGlobal(size_t size) { return GlobalAlloc(GMEM_FIXED, size); }
void FreeGlobal(void* block) { GlobalFree(block); }

}  // namespace vexo::platform
