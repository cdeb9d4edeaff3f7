// Locks that never allocate, neither when they are made nor when they are first locked or waited for: a lock is also
// taken where there is no memory left, and what a host calls then must still give its code.
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
