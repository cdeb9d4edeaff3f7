#include "platform/clock.h"

#include <windows.h>

#include <mutex>
#include <utility>
#include <vector>

#include "platform/windows/scoped_handle.h"

#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace vexo::platform {
namespace {

// Timers that no thread sleeps on just now: making one for each pause would double what a polling monitor costs. There
// are never more than threads have slept at once; they are closed when the library is unloaded.
class IdleTimers {
 public:
  // Not valid on systems without such timers.
  ScopedHandle Take() {
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      if (!timers_.empty()) {
        ScopedHandle timer = std::move(timers_.back());
        timers_.pop_back();
        return timer;
      }
    }
    return ScopedHandle(
        CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION, TIMER_ALL_ACCESS));
  }

  void GiveBack(ScopedHandle timer) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (timers_.size() < timers_.capacity()) {
      timers_.push_back(std::move(timer));  // Needs no memory; without room, the timer is closed.
    }
  }

  IdleTimers() { timers_.reserve(kMostIdleTimers); }

 private:
  static constexpr size_t kMostIdleTimers = 64;

  std::mutex mutex_;
  std::vector<ScopedHandle> timers_;
};

IdleTimers g_idle_timers;

// Sleep() rounds up to the system's timer period: at the usual 15.6 ms a pause of 20 ms would last 31 ms. A
// high-resolution timer (Windows 10 1803 and later) keeps to the millisecond.
bool SleepOnTimer(uint32_t milliseconds) {
  ScopedHandle timer = g_idle_timers.Take();
  if (!timer.valid()) {
    return false;
  }
  LARGE_INTEGER due;
  due.QuadPart = -static_cast<LONGLONG>(milliseconds) * 10'000;  // Relative, in units of 100 ns.
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
  if (!SleepOnTimer(milliseconds)) {
    Sleep(milliseconds);
  }
}

// Alertable, so that the host's asynchronous procedure calls go on while a thread waits for the spin flag.
void YieldThread() { SleepEx(0, TRUE); }

}  // namespace vexo::platform
