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

struct Clock {
  std::mutex mutex;
  uint64_t milliseconds = 0;
  std::vector<uint32_t> sleeps;

  std::condition_variable changed;
  std::thread::id awake;  // None: sleeps end on every thread.
  size_t held = 0;
};

Clock& TheClock() {
  static Clock clock;
  return clock;
}

uint64_t Now() {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  return clock.milliseconds;
}

}  // namespace

namespace test {

void SetClock(uint64_t milliseconds) {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  clock.milliseconds = milliseconds;
  clock.sleeps.clear();
}

void AdvanceClock(uint32_t milliseconds) {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  clock.milliseconds += milliseconds;
}

std::vector<uint32_t> RecordedSleeps() {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  return clock.sleeps;
}

HeldSleepers::HeldSleepers() {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  clock.awake = std::this_thread::get_id();
}

HeldSleepers::~HeldSleepers() { Release(); }

bool HeldSleepers::Await(size_t threads) const {
  constexpr std::chrono::seconds kPatience(60);
  Clock& clock = TheClock();
  std::unique_lock<std::mutex> lock(clock.mutex);
  return clock.changed.wait_for(lock, kPatience, [&] { return clock.held >= threads; });
}

void HeldSleepers::Release() {
  Clock& clock = TheClock();
  const std::lock_guard<std::mutex> guard(clock.mutex);
  clock.awake = {};
  clock.changed.notify_all();
}

}  // namespace test

namespace platform {

uint32_t TickCount() { return static_cast<uint32_t>(Now()); }

int64_t PerformanceCounter() { return static_cast<int64_t>(Now()) * kStepsPerMillisecond; }

int64_t PerformanceFrequency() { return kStepsPerMillisecond * 1000; }

void SleepMs(uint32_t milliseconds) {
  {
    Clock& clock = TheClock();
    std::unique_lock<std::mutex> lock(clock.mutex);
    const auto may_end = [&] { return clock.awake == std::thread::id() || clock.awake == std::this_thread::get_id(); };
    if (!may_end()) {
      ++clock.held;
      clock.changed.notify_all();
      clock.changed.wait(lock, may_end);
      --clock.held;
    }
    clock.milliseconds += milliseconds;
    if (clock.sleeps.size() < kMostSleeps) {
      clock.sleeps.push_back(milliseconds);
    }
  }
  YieldThread();
}

void YieldThread() { std::this_thread::yield(); }

}  // namespace platform
}  // namespace vexo
