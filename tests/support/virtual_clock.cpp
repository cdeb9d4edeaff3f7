#include "support/virtual_clock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/clock.h"

namespace vexo {
namespace {

constexpr size_t kMostSleeps = 1000;
constexpr int64_t kStepsPerMillisecond = 10'000;

std::mutex g_mutex;
uint64_t g_milliseconds = 0;
std::vector<uint32_t> g_sleeps;
std::condition_variable g_changed;
std::thread::id g_only_awake;  // While set, sleeps end on this thread only.
size_t g_sleepers = 0;

uint64_t Now() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_milliseconds;
}

}  // namespace

namespace test {

void SetClock(uint64_t milliseconds) {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_milliseconds = milliseconds;
  g_sleeps = {};  // Also releases the capacity.
}

void AdvanceClock(uint32_t milliseconds) {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_milliseconds += milliseconds;
}

std::vector<uint32_t> RecordedSleeps() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_sleeps;
}

HeldSleepers::HeldSleepers() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_only_awake = std::this_thread::get_id();
}

bool HeldSleepers::Await(size_t threads) const {
  std::unique_lock<std::mutex> lock(g_mutex);
  return g_changed.wait_for(lock, std::chrono::seconds(60), [&] { return g_sleepers >= threads; });
}

void HeldSleepers::Release() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_only_awake = {};
  g_changed.notify_all();
}

}  // namespace test

namespace platform {

uint32_t TickCount() { return static_cast<uint32_t>(Now()); }

int64_t PerformanceCounter() { return static_cast<int64_t>(Now()) * kStepsPerMillisecond; }

int64_t PerformanceFrequency() { return kStepsPerMillisecond * 1000; }

void SleepMs(uint32_t milliseconds) {
  {
    std::unique_lock<std::mutex> lock(g_mutex);
    ++g_sleepers;
    g_changed.notify_all();
    g_changed.wait(lock,
                   [] { return g_only_awake == std::thread::id() || g_only_awake == std::this_thread::get_id(); });
    --g_sleepers;
    g_milliseconds += milliseconds;
    if (g_sleeps.size() < kMostSleeps) {
      g_sleeps.push_back(milliseconds);
    }
  }
  YieldThread();
}

void RestMs(uint32_t milliseconds) { SleepMs(milliseconds); }

void YieldThread() { std::this_thread::yield(); }

}  // namespace platform
}  // namespace vexo
