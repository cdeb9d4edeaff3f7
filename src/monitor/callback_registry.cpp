#include "monitor/callback_registry.h"

namespace vexo {
namespace {

// A host written in C++ may throw. The exception has nowhere to go: on the reader thread it would end the host, and in
// an export it would meet callers that do not know exceptions.
void CallSafely(MonitorCallback callback, int32_t event, int32_t task_id, uint32_t value) {
  try {
    callback(event, task_id, value);
  } catch (...) {  // NOLINT(bugprone-empty-catch): see above.
  }
}

}  // namespace

int64_t CallbackRegistry::Add(MonitorCallback callback) {
  const auto key = static_cast<int64_t>(reinterpret_cast<intptr_t>(callback));
  const std::lock_guard<platform::RecursiveMutex> guard(*lock_);
  callbacks_[key] = callback;
  return key;
}

void CallbackRegistry::Remove(int64_t key) {
  const std::lock_guard<platform::RecursiveMutex> guard(*lock_);
  callbacks_.erase(key);
}

void CallbackRegistry::RemoveAll() {
  const std::lock_guard<platform::RecursiveMutex> guard(*lock_);
  callbacks_.clear();
}

bool CallbackRegistry::Deliver(int32_t event, int32_t task_id, uint32_t value) {
  const std::lock_guard<platform::RecursiveMutex> guard(*lock_);
  if (callbacks_.empty()) {
    return false;
  }
  // Each step looks the next key up: the callback just called may have changed the map.
  for (auto next = callbacks_.begin(); next != callbacks_.end();) {
    const int64_t key = next->first;
    CallSafely(next->second, event, task_id, value);
    next = callbacks_.upper_bound(key);
  }
  return true;
}

}  // namespace vexo
