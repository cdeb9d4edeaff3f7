#include "platform/clock.h"

#include <windows.h>

#include <utility>

#include "platform/windows/idle_handles.h"

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace vexo::platform {
namespace {

// Making a timer for each pause would double what a polling monitor costs.
IdleHandles g_idle_timers;

// Not valid on systems without such timers.
ScopedHandle TakeTimer() {
  ScopedHandle timer = g_idle_timers.Take();
  return timer.valid() ? std::move(timer)
                       : ScopedHandle(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                                             TIMER_ALL_ACCESS));
}

constexpr LONGLONG kUnitsPerMillisecond = 10'000;  // Of 100 ns, as timers count.

// Even these timers are late by a good part of a millisecond. A download sleeps for 20 ms thousands of times, so short
// sleeps end their timer a millisecond early and wait out the rest awake.
constexpr uint32_t kLongestShortSleepMs = 50;
constexpr LONGLONG kAwake = kUnitsPerMillisecond;

// Sleep() rounds up to the system's timer period: at the usual 15.6 ms a pause of 20 ms would last 31 ms. A
// high-resolution timer (Windows 10 1803 and later) keeps to the millisecond.
bool SleepOnTimer(LONGLONG units) {
  ScopedHandle timer = TakeTimer();
  if (!timer.valid()) {
    return false;
  }
  LARGE_INTEGER due;
  due.QuadPart = -units;  // Relative.
  const bool slept = SetWaitableTimer(timer.get(), &due, 0, nullptr, nullptr, FALSE) != 0 &&
                     WaitForSingleObject(timer.get(), INFINITE) == WAIT_OBJECT_0;
  if (slept) {
    g_idle_timers.GiveBack(std::move(timer));
  }
  return slept;
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
  const int64_t started = PerformanceCounter();
  const LONGLONG units = static_cast<LONGLONG>(milliseconds) * kUnitsPerMillisecond;
  const bool is_short = milliseconds > 0 && milliseconds <= kLongestShortSleepMs;
  if (!SleepOnTimer(is_short ? units - kAwake : units)) {
    Sleep(milliseconds);
  }
  const int64_t steps = PerformanceFrequency() * milliseconds / 1000;
  while (is_short && PerformanceCounter() - started < steps) {
    YieldProcessor();
  }
}

void RestMs(uint32_t milliseconds) { Sleep(milliseconds); }

// Alertable, so that the host's asynchronous procedure calls go on while a thread waits for the spin flag.
void YieldThread() { SleepEx(0, TRUE); }

}  // namespace vexo::platform
