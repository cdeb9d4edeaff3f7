// Where C++ exceptions end: a host in C, or in another language, cannot take them. Every export that may meet one runs
// in one of these two; the few that let one out, for hosts that have always caught it, say so in extend.h.
#ifndef VEXO_API_CONTAIN_H_
#define VEXO_API_CONTAIN_H_

#include <cstdint>
#include <new>

#include "vexo/error.h"

namespace vexo {

// Lack of memory becomes VEXO_ERROR_OUT_OF_MEMORY. What a callback of the host throws is the host's, and passes.
template <typename Function>
auto ContainOutOfMemory(Function function) -> decltype(function()) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
}

// Everything else, which only a host's own port object may throw, becomes VEXO_ERROR_IO.
template <typename Function>
int32_t ContainAll(Function function) {
  try {
    return ContainOutOfMemory(function);
  } catch (...) {
    return VEXO_ERROR_IO;
  }
}

}  // namespace vexo

#endif  // VEXO_API_CONTAIN_H_
