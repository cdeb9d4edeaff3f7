#include "discovery/usb_callback_registry.h"

namespace vexo {
namespace {

UsbCallbackRegistry g_callbacks;

int64_t KeyOf(USBMonitorCallback callback) { return static_cast<int64_t>(reinterpret_cast<intptr_t>(callback)); }

// A host written in C++ may throw, but nothing may fly through the system's code that has called the window.
void CallSafely(USBMonitorCallback callback, void* context, const char* device, int32_t event) {
  try {
    callback(context, device, event);
  } catch (...) {  // NOLINT(bugprone-empty-catch): see above.
  }
}

}  // namespace

UsbCallbackRegistry& UsbCallbacks() { return g_callbacks; }

int64_t UsbCallbackRegistry::Add(USBMonitorCallback callback, void* context) {
  const int64_t key = KeyOf(callback);
  const std::lock_guard<platform::RecursiveMutex> guard(lock_);
  callbacks_[key] = {callback, context};
  return key;
}

void UsbCallbackRegistry::Remove(USBMonitorCallback callback) {
  const std::lock_guard<platform::RecursiveMutex> guard(lock_);
  callbacks_.erase(KeyOf(callback));
}

void UsbCallbackRegistry::RemoveAll() {
  const std::lock_guard<platform::RecursiveMutex> guard(lock_);
  callbacks_.clear();
}

void UsbCallbackRegistry::Deliver(const char* device, int32_t event) {
  const std::lock_guard<platform::RecursiveMutex> guard(lock_);
  // Each step looks the next key up: the callback just called may have changed the map.
  for (auto next = callbacks_.begin(); next != callbacks_.end();) {
    const int64_t key = next->first;
    const Entry entry = next->second;
    CallSafely(entry.callback, entry.context, device, event);
    next = callbacks_.upper_bound(key);
  }
}

}  // namespace vexo
