// Mutexes that never allocate, neither on construction nor when locked or contended: locks are also taken when memory
// has run out, and the export must still return its code then.
#ifndef VEXO_PLATFORM_MUTEX_H_
#define VEXO_PLATFORM_MUTEX_H_

#if defined(_WIN32)
#include "platform/windows/mutex.h"
#else

#include <mutex>

namespace vexo::platform {

using Mutex = std::mutex;
using RecursiveMutex = std::recursive_mutex;

}  // namespace vexo::platform

#endif

#endif  // VEXO_PLATFORM_MUTEX_H_
