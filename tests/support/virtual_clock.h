// The clock that tests are linked with instead of the system's: time passes only when somebody sleeps or a test says
// so. Twenty reconnects take no time then, and always the same time.
#ifndef VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
#define VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_

#include <cstddef>
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

// While one lives, a sleep on any thread but its own does not end: a background thread stands still at a known place,
// and what the test's thread does has one outcome. Must end before such a thread is joined.
class HeldSleepers {
 public:
  HeldSleepers();
  HeldSleepers(const HeldSleepers&) = delete;
  HeldSleepers& operator=(const HeldSleepers&) = delete;
  ~HeldSleepers();

  // Waits until this many threads sleep. False: they never do.
  bool Await(size_t threads) const;

  void Release();
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
