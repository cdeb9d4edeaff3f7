#include "windows/virtual_time.h"

#include "platform/clock.h"
#include "platform/windows/wait.h"

namespace vexo {
namespace {

constexpr DWORD kPatienceMs = 20'000;  // For transfers that the system is about to complete.

}  // namespace

test::VirtualTime& test::Time() {
  static VirtualTime time;
  return time;
}

namespace platform {

using test::Time;

uint32_t TickCount() { return Time().now += Time().tick_step; }
int64_t PerformanceCounter() { return Time().now; }
int64_t PerformanceFrequency() { return 1000; }
void YieldThread() { ++Time().now; }  // So that loops that only yield end.

void SleepMs(uint32_t milliseconds) {
  Time().sleeps.push_back(milliseconds);
  Time().now += milliseconds;
}

void RestMs(uint32_t milliseconds) { SleepMs(milliseconds); }

DWORD WaitForHandle(HANDLE handle, DWORD milliseconds) {
  if (milliseconds == INFINITE) {
    return WaitForSingleObject(handle, kPatienceMs);
  }
  Time().waits.push_back(milliseconds);
  if (Time().wait_events.empty()) {
    Time().now += milliseconds;
    return WaitForSingleObject(handle, 0);
  }
  const test::WaitEvent event = Time().wait_events.front();
  Time().wait_events.pop_front();
  Time().now += event.after_ms;
  event.action();
  const DWORD waited = WaitForSingleObject(handle, kPatienceMs);
  return event.too_late ? static_cast<DWORD>(WAIT_TIMEOUT) : waited;
}

}  // namespace platform
}  // namespace vexo
