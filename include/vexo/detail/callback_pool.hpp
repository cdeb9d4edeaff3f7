// Part of the C++ headers, not for hosts: std::function listeners behind C callbacks.
#ifndef VEXO_DETAIL_CALLBACK_POOL_HPP_
#define VEXO_DETAIL_CALLBACK_POOL_HPP_

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <mutex>
#include <utility>

namespace vexo::detail {

// Functions for C callbacks without a context argument: each has an address of its own and calls the listener that it
// is lent to. Exceptions of listeners are dropped.
template <typename... Arguments>
class CallbackPool {
 public:
  using Listener = std::function<void(Arguments...)>;
  using Function = void (*)(Arguments...);

  static constexpr size_t kSize = 64;

  // Returns a function that calls the listener until GiveBack; null if all of them are lent.
  static Function Lend(const Listener* listener) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto free = std::find(listeners_.begin(), listeners_.end(), nullptr);
    if (free == listeners_.end()) {
      return nullptr;
    }
    *free = listener;
    return kFunctions[static_cast<size_t>(free - listeners_.begin())];
  }

  // The listener's function must neither be running nor be called any more.
  static void GiveBack(const Listener* listener) {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::replace(listeners_.begin(), listeners_.end(), listener, static_cast<const Listener*>(nullptr));
  }

 private:
  template <size_t index>
  static void Call(Arguments... arguments) {
    try {
      (*listeners_[index])(arguments...);
    } catch (...) {  // The library may come from another compiler: no exception may reach it.
    }
  }

  template <size_t... indices>
  static constexpr std::array<Function, kSize> MakeFunctions(std::index_sequence<indices...>) {
    return {&Call<indices>...};
  }

  static constexpr std::array<Function, kSize> kFunctions = MakeFunctions(std::make_index_sequence<kSize>());
  inline static std::mutex mutex_;
  inline static std::array<const Listener*, kSize> listeners_ = {};
};

}  // namespace vexo::detail

#endif  // VEXO_DETAIL_CALLBACK_POOL_HPP_
