// The host's callbacks for job events.
#ifndef VEXO_MONITOR_CALLBACK_REGISTRY_H_
#define VEXO_MONITOR_CALLBACK_REGISTRY_H_

#include <cstdint>
#include <map>
#include <mutex>

#include "platform/mutex.h"
#include "vexo/extend.h"

namespace vexo {

// Callbacks by key, which is the numeric value of the function's address: one function is registered once only. The
// lock is recursive, so callbacks may add and remove callbacks.
class CallbackRegistry {
 public:
  // Every operation takes the lock, which must outlive the registry.
  explicit CallbackRegistry(platform::RecursiveMutex* lock) : lock_(lock) {}
  // Gives the key.
  int64_t Add(MonitorCallback callback);

  // Nothing happens when there is none with this key.
  void Remove(int64_t key);
  void RemoveAll();

  // Calls every callback in ascending order of the keys, under the lock. One that is removed during the delivery is not
  // called any more. False: there is none, nothing was called.
  bool Deliver(int32_t event, int32_t task_id, uint32_t value);

 private:
  platform::RecursiveMutex* const lock_;
  std::map<int64_t, MonitorCallback> callbacks_;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_CALLBACK_REGISTRY_H_
