// Time, as the library may see it. Tests link a virtual clock instead of the system's.
#ifndef VEXO_PLATFORM_CLOCK_H_
#define VEXO_PLATFORM_CLOCK_H_

#include <cstdint>

namespace vexo::platform {

// Milliseconds since some fixed moment; wraps around, so differences are taken in uint32_t.
uint32_t TickCount();

// A finer count, and its steps per second.
int64_t PerformanceCounter();
int64_t PerformanceFrequency();

// Sleeps for at least `milliseconds`, and not for a whole further period of a coarse system timer. For the waits of a
// conversation with a printer: short ones are waited out awake in part.
void SleepMs(uint32_t milliseconds);

// An ordinary sleep of the system, which costs least. For threads that look now and then.
void RestMs(uint32_t milliseconds);

// Lets another thread run while a spin flag is busy.
void YieldThread();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_CLOCK_H_
