// Stops C++ exceptions at the C interface: hosts written in C or in another language cannot catch them. Every export
// that may meet one of the library's exceptions runs inside one of these two functions.
//
// Compatibility: SetPrintWidth and GetPrintWidth let std::bad_alloc through, DestroyReprintMonitorObj and
// StopUSBMonitorThread let std::system_error through, because hosts in the field catch them. extend.h documents each.
#ifndef VEXO_API_CONTAIN_H_
#define VEXO_API_CONTAIN_H_

#include <cstdint>
#include <new>

#include "vexo/error.h"

namespace vexo {

// Turns std::bad_alloc into VEXO_ERROR_OUT_OF_MEMORY. Anything else is an exception of a host's callback and passes
// through.
template <typename Function>
auto ContainOutOfMemory(const Function& function) -> decltype(function()) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
}

// As above, and turns every other exception into VEXO_ERROR_IO: only a port object supplied by the host throws one.
template <typename Function>
int32_t ContainAll(const Function& function) {
  try {
    return ContainOutOfMemory(function);
  } catch (...) {
    return VEXO_ERROR_IO;
  }
}

}  // namespace vexo

#endif  // VEXO_API_CONTAIN_H_
