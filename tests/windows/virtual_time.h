// Time that passes only while the library waits or sleeps. Linked instead of the system's clock and waits, so that
// every time limit has its scenario, which takes no time and always goes the same way.
#ifndef VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_
#define VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace vexo::test {

// What happens while the library waits for a transfer.
struct Happening {
  uint32_t after_ms;            // Since the wait began; may lie behind its end, as systems wake threads late.
  std::function<void()> event;  // Completes the transfer.
  bool too_late = false;        // The wait reports that its time is over all the same.
};

struct VirtualTime {
  // Close to the wrap of the tick count, which every scenario therefore crosses.
  uint32_t now = static_cast<uint32_t>(-50);
  uint32_t tick_step = 0;            // Added by every look at the clock.
  std::deque<Happening> happenings;  // One for each wait to come. A wait without one passes in silence.
  std::vector<uint32_t> waits;       // Limits of the waits for transfers, in milliseconds.
  std::vector<uint32_t> sleeps;
};

VirtualTime& Time();

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_
