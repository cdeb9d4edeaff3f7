// Replaces the system's clock and waits: time passes only while the library waits or sleeps. Tests of time limits are
// thus fast and deterministic.
#ifndef VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_
#define VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace vexo::test {

// An event during a wait for a transfer.
struct WaitEvent {
  uint32_t after_ms;             // From the start of the wait. May exceed its limit, since threads may wake late.
  std::function<void()> action;  // Completes the transfer.
  bool too_late = false;         // The wait reports a timeout nevertheless.
};

struct VirtualTime {
  // Shortly before the tick count wraps, so that every test crosses the wrap.
  uint32_t now = static_cast<uint32_t>(-50);
  uint32_t tick_step = 0;             // Added at each call of TickCount.
  std::deque<WaitEvent> wait_events;  // One for each wait. Without one, a wait times out.
  std::vector<uint32_t> waits;        // Limits of the waits for transfers, in milliseconds.
  std::vector<uint32_t> sleeps;
};

VirtualTime& Time();

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_VIRTUAL_TIME_H_
