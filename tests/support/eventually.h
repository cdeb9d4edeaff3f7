// Waiting for what other threads are about to do, with a bound that only a fault exceeds.
#ifndef VEXO_TESTS_SUPPORT_EVENTUALLY_H_
#define VEXO_TESTS_SUPPORT_EVENTUALLY_H_

#include <chrono>
#include <thread>

namespace vexo::test {

// False: the condition never comes true.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto patience_ends = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (!condition() && std::chrono::steady_clock::now() < patience_ends) {
    std::this_thread::yield();
  }
  return condition();
}

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_EVENTUALLY_H_
