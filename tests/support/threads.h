// Helpers to run several threads and to wait for a condition.
#ifndef VEXO_TESTS_SUPPORT_THREADS_H_
#define VEXO_TESTS_SUPPORT_THREADS_H_

#include <chrono>
#include <thread>
#include <vector>

namespace vexo::test {

// Runs work(0) to work(count - 1), each on its own thread, and joins them.
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

// Waits for the condition. @return false after two minutes, a limit that only a fault exceeds.
template <typename Condition>
bool Eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_THREADS_H_
