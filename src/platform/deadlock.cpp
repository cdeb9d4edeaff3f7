#include <system_error>

#include "platform/thread.h"

namespace vexo::platform {
namespace {

// Constructed when the library is loaded; copies share its text.
const std::system_error kDeadlock(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                  "resource deadlock would occur");

}  // namespace

// NOLINTNEXTLINE(cert-err09-cpp,cert-err61-cpp,misc-throw-by-value-catch-by-reference): making one may need memory.
void ThrowDeadlock() { throw kDeadlock; }

}  // namespace vexo::platform
