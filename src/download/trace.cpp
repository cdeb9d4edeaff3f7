#include "download/trace.h"

#include <cstdarg>
#include <cstdio>

namespace vexo {

void downloadTrace(const char* format, ...) {  // NOLINT(cert-dcl50-cpp): printf's own arguments, checked by compilers.
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);  // NOLINT(clang-analyzer-valist.Uninitialized): it is not.
  va_end(arguments);
  static_cast<void>(std::fflush(stdout));
}

}  // namespace vexo
