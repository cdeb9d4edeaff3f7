// Time. Tests link a virtual clock instead of the system's.
#ifndef VEXO_PLATFORM_CLOCK_H_
#define VEXO_PLATFORM_CLOCK_H_

#include <cstdint>

namespace vexo::platform {

// Milliseconds since a fixed but unspecified moment. Wraps around, so compute differences in uint32_t.
uint32_t TickCount();

// A high-resolution count and its frequency in Hz.
int64_t PerformanceCounter();
int64_t PerformanceFrequency();

// Sleeps for at least `milliseconds`, without rounding up to the period of a coarse system timer: short sleeps spin for
// the last millisecond. For the waits that the printer's protocol prescribes.
void SleepMs(uint32_t milliseconds);

// The system's plain sleep, at the lowest cost. For threads that poll.
void RestMs(uint32_t milliseconds);

// Yields to another thread while a spin flag is busy.
void YieldThread();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_CLOCK_H_
