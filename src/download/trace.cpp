#include "download/trace.h"

#include <cstdarg>
#include <cstdio>

namespace vexo {

void downloadTrace(const char* format, ...) {  // NOLINT(cert-dcl50-cpp): printf's own arguments, checked by compilers.
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
  std::fflush(stdout);
}

}  // namespace vexo
