#include "platform/clock.h"

#include <chrono>
#include <thread>

namespace vexo::platform {

uint32_t TickCount() { return static_cast<uint32_t>(PerformanceCounter() / 1'000'000); }

int64_t PerformanceCounter() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

int64_t PerformanceFrequency() { return 1'000'000'000; }

void SleepMs(uint32_t milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

void RestMs(uint32_t milliseconds) { SleepMs(milliseconds); }

void YieldThread() { std::this_thread::yield(); }

}  // namespace vexo::platform
