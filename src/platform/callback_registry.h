// The host's callbacks for one kind of event.
#ifndef VEXO_PLATFORM_CALLBACK_REGISTRY_H_
#define VEXO_PLATFORM_CALLBACK_REGISTRY_H_

#include <cstdint>
#include <map>
#include <mutex>

#include "platform/mutex.h"

namespace vexo::platform {

// Callbacks with their contexts. The key of a callback is the numeric value of its address, so each function is
// registered once. Every operation takes the lock, which must outlive the registry; it is recursive, so callbacks may
// add and remove callbacks.
template <typename Function>
class CallbackRegistry {
 public:
  explicit CallbackRegistry(RecursiveMutex* lock) : lock_(lock) {}

  static int64_t KeyOf(Function function) { return static_cast<int64_t>(reinterpret_cast<intptr_t>(function)); }

  // Returns the key. Replaces the context of a function that is already registered. Throws std::bad_alloc.
  int64_t Add(Function function, void* context = nullptr) {
    const int64_t key = KeyOf(function);
    const std::lock_guard<RecursiveMutex> guard(*lock_);
    callbacks_[key] = {function, context};
    return key;
  }

  // Has no effect without a callback of this key.
  void Remove(int64_t key) {
    const std::lock_guard<RecursiveMutex> guard(*lock_);
    callbacks_.erase(key);
  }

  void RemoveAll() {
    const std::lock_guard<RecursiveMutex> guard(*lock_);
    callbacks_.clear();
  }

  // Calls `call(function, context)` for each callback in ascending order of the keys, under the lock. Skips callbacks
  // removed during the delivery. Returns false, without a call, when there are none.
  template <typename Call>
  bool Deliver(const Call& call) {
    const std::lock_guard<RecursiveMutex> guard(*lock_);
    const bool any = !callbacks_.empty();
    // Looks up the next key after each call: the callback may have changed the map.
    for (auto next = callbacks_.begin(); next != callbacks_.end();) {
      const int64_t key = next->first;
      const Entry entry = next->second;
      // A host written in C++ may throw. An exception must not unwind through the system's code that called a window
      // procedure, terminate a thread of the library, or reach a caller that does not handle exceptions.
      try {
        call(entry.function, entry.context);
      } catch (...) {  // NOLINT(bugprone-empty-catch): see above.
      }
      next = callbacks_.upper_bound(key);
    }
    return any;
  }

 private:
  struct Entry {
    Function function;
    void* context;
  };

  RecursiveMutex* const lock_;
  std::map<int64_t, Entry> callbacks_;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_CALLBACK_REGISTRY_H_
