// Several threads at once, and waiting for what they are about to do.
#ifndef VEXO_TESTS_SUPPORT_THREADS_H_
#define VEXO_TESTS_SUPPORT_THREADS_H_

#include <chrono>
#include <thread>
#include <vector>

namespace vexo::test {

// Runs work(0), work(1) and so on, each on a thread of its own, until all have returned.
template <typename Work>
void RunOnThreads(int count, Work work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) {
    threads.emplace_back([&work, i] { work(i); });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// False: the condition never comes true. The bound is one that only a fault exceeds.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto patience_ends = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= patience_ends) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_THREADS_H_
