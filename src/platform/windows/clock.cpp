#include "platform/clock.h"

#include <windows.h>

#include "platform/windows/scoped_handle.h"

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace vexo::platform {
namespace {

// Sleep() rounds up to the system's timer period: at the usual 15.6 ms a pause of 20 ms would last 31 ms. A
// high-resolution timer (Windows 10 1803 and later) keeps to the millisecond.
bool SleepOnTimer(uint32_t milliseconds) {
  const ScopedHandle timer(
      CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, TIMER_ALL_ACCESS));
  if (!timer.valid()) {
    return false;
  }
  LARGE_INTEGER due;
  due.QuadPart = -static_cast<LONGLONG>(milliseconds) * 10'000;  // Relative, in units of 100 ns.
  return SetWaitableTimer(timer.get(), &due, 0, nullptr, nullptr, FALSE) != 0 &&
         WaitForSingleObject(timer.get(), INFINITE) == WAIT_OBJECT_0;
}

}  // namespace

uint32_t TickCount() { return GetTickCount(); }

int64_t PerformanceCounter() {
  LARGE_INTEGER count;
  QueryPerformanceCounter(&count);
  return count.QuadPart;
}

int64_t PerformanceFrequency() {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  return frequency.QuadPart;
}

void SleepMs(uint32_t milliseconds) {
  if (!SleepOnTimer(milliseconds)) {
    Sleep(milliseconds);
  }
}

// Alertable, so that the host's asynchronous procedure calls go on while a thread waits for the spin flag.
void YieldThread() { SleepEx(0, TRUE); }

}  // namespace vexo::platform
