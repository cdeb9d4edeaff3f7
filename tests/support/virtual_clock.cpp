#include "support/virtual_clock.h"

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

}  // namespace test

namespace platform {

uint32_t TickCount() { return static_cast<uint32_t>(Now()); }

int64_t PerformanceCounter() { return static_cast<int64_t>(Now()) * kStepsPerMillisecond; }

int64_t PerformanceFrequency() { return kStepsPerMillisecond * 1000; }

void SleepMs(uint32_t milliseconds) {
  {
    Clock& clock = TheClock();
    const std::lock_guard<std::mutex> guard(clock.mutex);
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
