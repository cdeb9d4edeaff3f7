// Replaces the system's clock in tests. Time advances only when a thread sleeps or a test advances it, and is the same
// for all threads. Thread-safe.
#ifndef VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
#define VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vexo::test {

// Sets the time and clears the recorded sleeps.
void SetClock(uint64_t milliseconds);

void AdvanceClock(uint32_t milliseconds);

// The first thousand sleeps of all threads since SetClock, in order.
std::vector<uint32_t> RecordedSleeps();

// While this object exists, sleeps end only on the thread that created it, so background threads stop at a known point.
// Release before such a thread is joined.
class HeldSleepers {
 public:
  HeldSleepers();
  HeldSleepers(const HeldSleepers&) = delete;
  HeldSleepers& operator=(const HeldSleepers&) = delete;
  ~HeldSleepers() { Release(); }

  // Waits until this many threads sleep. @return false if they do not within a minute.
  bool Await(size_t threads) const;

  void Release();
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_VIRTUAL_CLOCK_H_
