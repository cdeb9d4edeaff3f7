// Locks of objects that come and go. The standard library's, as the library is built for Windows, take memory when they
// are first locked and an event when a thread first waits for them, and never give either back: a host that makes a
// monitor for each receipt would lose both each time.
#ifndef VEXO_PLATFORM_MUTEX_H_
#define VEXO_PLATFORM_MUTEX_H_

#include <pthread.h>

#include <mutex>

namespace vexo::platform {

template <typename StandardMutex>
class ReleasedMutex : public StandardMutex {
 public:
  ReleasedMutex() = default;
  ReleasedMutex(const ReleasedMutex&) = delete;
  ReleasedMutex& operator=(const ReleasedMutex&) = delete;
  ~ReleasedMutex() { pthread_mutex_destroy(this->native_handle()); }
};

using Mutex = ReleasedMutex<std::mutex>;
using RecursiveMutex = ReleasedMutex<std::recursive_mutex>;

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_MUTEX_H_
