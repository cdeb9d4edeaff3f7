#include "platform/global_text.h"

#include <cstdlib>

namespace vexo::platform {

void* AllocateGlobal(size_t size) { return std::malloc(size); }
void FreeGlobal(void* block) { std::free(block); }

}  // namespace vexo::platform
