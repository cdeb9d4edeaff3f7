// Delivery of job events to callbacks.
#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

#include "monitor_fixture.h"
#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

// Callbacks have no context argument, so their actions and the events they received are global.
std::vector<std::string> g_events;
std::function<void()> g_action;

template <int kIndex>
void Record(int32_t event, int32_t task, uint32_t value) {
  {
    const UncountedAllocations uncounted;
    g_events.push_back("ABC"[kIndex] + " "s + std::to_string(event) + " " + std::to_string(task) + " " +
                       std::to_string(value));
  }
  if (kIndex == 0 && g_action) {
    g_action();
  }
}

MonitorCallback const kA = Record<0>;
MonitorCallback const kB = Record<1>;
MonitorCallback const kC = Record<2>;

class MonitorCallbacks : public MonitorTest {
 protected:
  MonitorCallbacks() {
    g_events.clear();
    g_action = nullptr;
    Open();
  }

  int64_t Add(MonitorCallback callback) {
    int64_t id = 0;
    EXPECT_EQ(0, AddReprintMonitorFun(monitor_, callback, &id));
    return id;
  }

  // The events delivered for `bytes`.
  Texts Events(const std::string& bytes) {
    g_events.clear();
    PollWith(bytes);
    return g_events;
  }
};

TEST_F(MonitorCallbacks, ReceiveJobEventsInsteadOfTheQueue) {
  const int64_t id = Add(kA);
  EXPECT_EQ(id, Add(kA));
  EXPECT_EQ((Texts{"A 1 7 0", "A 2 7 4294967295"}), Events(Started("0007") + Ended("0007", 0xFFFFFFFF)));
  EXPECT_EQ("none", TakeReport());
  EXPECT_EQ(Texts{}, Events(Frame(0x102, "?0007") + ValueReply(1)));
  EXPECT_EQ(2U, monitor_->CountWaiting());
  EXPECT_EQ(0, RemoveReprintMonitorFun(monitor_, id));
  EXPECT_EQ(Texts{}, Events(Started("0008")));
  EXPECT_EQ("task 8 status 1", TakeReport());
}

TEST_F(MonitorCallbacks, MayAddAndRemoveCallbacksWhileTheyRun) {
  Add(kA);
  g_action = [&] {
    Add(kB);
    Add(kC);
  };
  EXPECT_EQ("A 1 7 0", Events(Started("0007")).front());
  EXPECT_EQ(3U, Events(Started("0008")).size());

  const int64_t ids[] = {Add(kA), Add(kB), Add(kC)};
  g_action = [&] {
    for (const int64_t id : ids) {
      EXPECT_EQ(0, RemoveReprintMonitorFun(monitor_, id));
    }
  };
  const Texts events = Events(Started("0007") + Started("0008"));
  // kA has removed all callbacks: those with lower ids ran before it, none ran after it.
  EXPECT_EQ("A 1 7 0", events.back());
  EXPECT_EQ("task 8 status 1", TakeReport());
}

TEST_F(MonitorCallbacks, AreCalledInOrderOfTheirIdsDespiteExceptions) {
  g_action = [] { throw std::runtime_error("error in a callback"); };
  EXPECT_EQ(reinterpret_cast<intptr_t>(kC), Add(kC));
  std::vector<std::pair<int64_t, std::string>> expected = {
      {reinterpret_cast<intptr_t>(kC), "C 1 7 0"}, {Add(kA), "A 1 7 0"}, {Add(kB), "B 1 7 0"}};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ((Texts{expected[0].second, expected[1].second, expected[2].second}), Events(Started("0007")));
}

// An export called inside a callback also receives and decodes reports. Each report must be delivered exactly once.
TEST_F(MonitorCallbacks, MayCallExportsThatReceive) {
  SetReadTimeOut(monitor_, 0);
  Add(kA);
  uint32_t status = 0;
  int32_t result = 4711;
  g_action = [&] {
    if (g_events.size() == 1) {
      result = GetDeviceStatus(monitor_, &status);
    }
  };
  QueueRead(Started("0001") + Started("0002") + Started("0003").substr(0, 15));
  QueueRead(Started("0003").substr(15) + Ended("0001", 1));
  QueueRead(ValueReply(5) + Ended("0002", 2));
  EXPECT_EQ((Texts{"A 1 1 0", "A 1 2 0", "A 1 3 0", "A 2 1 1", "A 2 2 2"}), Events(""));
  EXPECT_EQ(0, result);
  EXPECT_EQ(~5U, status);
}

// Each answer arrives with the next event, so deliveries nest up to a maximum depth. At that depth, events are queued
// for the outermost delivery and the query gets its answer. At other depths, a nested query may take the answer.
TEST_F(MonitorCallbacks, MayQueryAtEachOfTenThousandEvents) {
  constexpr uint32_t kEvents = 10'000;
  constexpr int kDeepest = 7;
  SetReadTimeOut(monitor_, 0);
  Add(kA);
  uint32_t sent = 0;
  const auto next = [&] { return ++sent <= kEvents ? Ended("0007", sent) : ""; };
  uint32_t called = 0;
  int depth = 0;
  int deepest = 0;
  const auto ask = [&](const std::string& answer) {
    port_.OnWrite({0, {}, {}, [=] { QueueRead(answer); }});
    uint32_t status = 0;
    const int32_t result = GetDeviceStatus(monitor_, &status);
    EXPECT_TRUE(result == 0 || (result == -7003 && depth < kDeepest)) << result;
  };
  g_action = [&] {
    ASSERT_EQ("A 2 7 " + std::to_string(++called), std::exchange(g_events, {}).back());
    deepest = std::max(deepest, ++depth);
    ask(ValueReply(1) + next());
    --depth;
  };
  PollWith(next());
  EXPECT_EQ(kEvents, called);
  EXPECT_EQ(kDeepest, deepest);

  // Queued events go to the event queue when the last callback is removed, and are dropped when monitoring is closed.
  for (const bool closes : {false, true}) {
    g_action = [&] {
      ++depth;
      if (depth < kDeepest) {
        ask(Started("0001"));
      } else {
        ask(Started("0002") + Started("0003") + ValueReply(1));
        EXPECT_EQ(0, closes ? CloseReprintMonitorWork(monitor_)
                            : RemoveReprintMonitorFun(monitor_, reinterpret_cast<intptr_t>(kA)));
      }
      --depth;
    };
    PollWith(Started("0001"));
    EXPECT_EQ(closes ? "none" : "task 2 status 1", TakeReport());
    EXPECT_EQ(closes ? "none" : "task 3 status 1", TakeReport());
    Add(kA);
  }
}

// Each event is delivered once, at whatever nesting depth an allocation fails.
TEST_F(MonitorCallbacks, AreCalledOnceForEachEventWhenMemoryRunsOut) {
  SetReadTimeOut(monitor_, 0);
  Add(kA);
  size_t called = 0;
  size_t sent = 0;
  const auto send_two = [&] {
    const UncountedAllocations uncounted;
    sent += 2;
    QueueRead(Started("0001") + Started("0002"));
  };
  g_action = [&] {
    if (++called < 20) {
      {
        const UncountedAllocations uncounted;
        port_.OnWrite({0, {}, {}, send_two});
      }
      uint32_t status = 0;
      GetDeviceStatus(monitor_, &status);
    }
  };
  bool failed = true;
  for (uint32_t nth = 1; failed; ++nth) {
    called = sent = 0;
    send_two();
    AllocationFault fault(nth);
    try {
      monitor_->Poll(0);
    } catch (const std::bad_alloc&) {
    }
    failed = fault.Lift();
    for (int poll = 0; poll < 100; ++poll) {
      monitor_->Poll(0);
    }
    EXPECT_EQ(sent, called) << nth;
  }
}

TEST_F(MonitorCallbacks, MayCloseMonitoring) {
  Add(kA);
  g_action = [&] { EXPECT_EQ(0, CloseReprintMonitorWork(monitor_)); };
  EXPECT_EQ(Texts{"A 1 1 0"}, Events(Started("0001") + Started("0002"))) << "the second event is dropped";
  g_action = nullptr;
  EXPECT_EQ(Texts{"A 1 3 0"}, Events(Started("0003")));
}

}  // namespace
}  // namespace vexo::test
