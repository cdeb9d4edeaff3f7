// The clock that tests are linked with instead of the system's: time passes only when somebody sleeps or a test says
// so. Safe to use from any thread; a sleep on one thread passes the time of all.
#ifndef VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
#define VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vexo::test {

// Time goes on from `milliseconds`; the sleeps so far are forgotten.
void SetClock(uint64_t milliseconds);

void AdvanceClock(uint32_t milliseconds);

// The first thousand sleeps since SetClock, in order, whichever thread slept.
std::vector<uint32_t> RecordedSleeps();

// While one lives, a sleep on any thread but its own does not end: a background thread stands still at a known place.
// Must end before such a thread is joined.
class HeldSleepers {
 public:
  HeldSleepers();
  HeldSleepers(const HeldSleepers&) = delete;
  HeldSleepers& operator=(const HeldSleepers&) = delete;
  ~HeldSleepers() { Release(); }

  // Waits until this many threads sleep. False: they never do.
  bool Await(size_t threads) const;

  void Release();
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
