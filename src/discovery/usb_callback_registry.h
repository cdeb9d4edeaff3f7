// The host's callbacks for USB printers that come and go.
#ifndef VEXO_DISCOVERY_USB_CALLBACK_REGISTRY_H_
#define VEXO_DISCOVERY_USB_CALLBACK_REGISTRY_H_

#include <cstdint>
#include <map>
#include <mutex>

#include "platform/mutex.h"
#include "vexo/extend.h"

namespace vexo {

// Callbacks with their contexts, by key, which is the numeric value of the function's address: one function is
// registered once only. The lock is recursive, so callbacks may add and remove callbacks.
class UsbCallbackRegistry {
 public:
  // Gives the key. A callback that is there already gets the new context.
  int64_t Add(USBMonitorCallback callback, void* context);

  // Nothing happens when it is not there.
  void Remove(USBMonitorCallback callback);
  void RemoveAll();

  // Calls every callback in ascending order of the keys, under the lock. One that is removed during the delivery is not
  // called any more.
  void Deliver(const char* device, int32_t event);

 private:
  struct Entry {
    USBMonitorCallback callback;
    void* context;
  };

  platform::RecursiveMutex lock_;
  std::map<int64_t, Entry> callbacks_;
};

// Those of the process.
UsbCallbackRegistry& UsbCallbacks();

}  // namespace vexo

#endif  // VEXO_DISCOVERY_USB_CALLBACK_REGISTRY_H_
