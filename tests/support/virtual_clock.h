// The clock that tests are linked with instead of the system's: time passes only when somebody sleeps or a test says
// so. Twenty reconnects take no time then, and always the same time.
#ifndef VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
#define VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_

#include <cstdint>
#include <vector>

namespace vexo::test {

// Safe to use from any thread; a sleep on one thread passes the time of all.

// Time goes on from `milliseconds`; the sleeps so far are forgotten.
void SetClock(uint64_t milliseconds);

void AdvanceClock(uint32_t milliseconds);

// The sleeps since SetClock, in order, whichever thread slept. A thread that never stops polling fills no memory: only
// the first thousand are kept.
std::vector<uint32_t> RecordedSleeps();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
