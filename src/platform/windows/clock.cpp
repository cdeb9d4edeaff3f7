#include "platform/clock.h"

#include <windows.h>

#include <utility>

#include "platform/windows/idle_handles.h"

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace vexo::platform {
namespace {

// Creating a timer for each pause would double the cost of a polling monitor.
IdleHandles g_idle_timers;

// Returns an invalid handle on systems without high-resolution timers.
ScopedHandle TakeTimer() {
  ScopedHandle timer = g_idle_timers.Take();
  return timer.valid() ? std::move(timer)
                       : ScopedHandle(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                                             TIMER_ALL_ACCESS));
}

constexpr LONGLONG kUnitsPerMillisecond = 10'000;  // Timers count in units of 100 ns.

// These timers are still late by most of a millisecond. A download sleeps for 20 ms thousands of times, so a short
// sleep ends its timer one millisecond early and spins for the rest.
constexpr uint32_t kLongestShortSleepMs = 50;
constexpr LONGLONG kSpinTime = kUnitsPerMillisecond;

// Sleep() rounds up to the system's timer period: at the usual 15.6 ms a pause of 20 ms lasts 31 ms. A high-resolution
// timer (Windows 10 1803 and later) is accurate to the millisecond.
bool SleepOnTimer(LONGLONG units) {
  ScopedHandle timer = TakeTimer();
  if (!timer.valid()) {
    return false;
  }
  LARGE_INTEGER due;
  due.QuadPart = -units;  // Negative: relative.
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
  if (!SleepOnTimer(is_short ? units - kSpinTime : units)) {
    Sleep(milliseconds);
  }
  const int64_t steps = PerformanceFrequency() * milliseconds / 1000;
  while (is_short && PerformanceCounter() - started < steps) {
    YieldProcessor();
  }
}

void RestMs(uint32_t milliseconds) { Sleep(milliseconds); }

// Alertable, so that the host's asynchronous procedure calls run while a thread waits for the spin flag.
void YieldThread() { SleepEx(0, TRUE); }

}  // namespace vexo::platform
