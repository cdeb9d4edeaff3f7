// The reader thread runs while other threads call exports. The tests also serve ThreadSanitizer. With the virtual
// clock, the reader polls without pauses.

#include <atomic>
#include <random>
#include <stdexcept>
#include <thread>

#include "core/core_test.h"
#include "support/allocation_faults.h"
#include "support/stream_port.h"
#include "support/threads.h"

namespace vexo::test {
namespace {

std::atomic<int> g_called[2];
std::atomic<bool> g_may_be_called[2];
std::atomic<int> g_unexpected{0};
std::atomic<CVEXOPrinterReadHelper*> g_monitor{nullptr};

template <int kIndex>
void Count(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {
  ++g_called[kIndex];
  g_unexpected += g_may_be_called[kIndex] ? 0 : 1;
}

std::string OneEvent(size_t /*room*/) { return Ended("0001", 2) + ValueReply(3); }

// A monitor and its printer, which by default reports one job end and one reply at each read.
class MonitoredPrinter {
 public:
  template <typename... PortArguments>
  explicit MonitoredPrinter(PortArguments... port_arguments) : port_(std::move(port_arguments)...) {
    EXPECT_EQ(0, SetReadTimeOut(monitor_, 40));
    EXPECT_EQ(0, RegisterPrinter(monitor_, &handle_));
  }
  MonitoredPrinter() : MonitoredPrinter(OneEvent) {}
  ~MonitoredPrinter() { EXPECT_EQ(0, DestroyReprintMonitorObj(monitor_)); }

  void Open() { ASSERT_EQ(0, OpenReprintMonitorWork(monitor_)); }
  void Add(MonitorCallback callback) {
    int64_t id = 0;
    ASSERT_EQ(0, AddReprintMonitorFun(monitor_, callback, &id));
  }

  CVEXOPrinterReadHelper* monitor() { return monitor_; }

 private:
  StreamPort port_;
  VexoPrinterHandle handle_ = OpenHandle(&port_);
  CVEXOPrinterReadHelper* const monitor_ = GetReprintMonitorObj();
};

template <int kIndex>
void AddAndRemove(CVEXOPrinterReadHelper* monitor) {
  for (int round = 0; round < 1000; ++round) {
    int64_t id = 0;
    g_may_be_called[kIndex] = true;
    const int before = g_called[kIndex];
    EXPECT_EQ(0, AddReprintMonitorFun(monitor, Count<kIndex>, &id));
    EXPECT_TRUE(round % 100 != 0 || Eventually([&] { return g_called[kIndex] > before; }));
    EXPECT_EQ(0, RemoveReprintMonitorFun(monitor, id));
    g_may_be_called[kIndex] = false;
  }
}

TEST(MonitorThreads, CallbacksAreAddedAndRemovedDuringDelivery) {
  g_unexpected = 0;
  MonitoredPrinter monitored;
  monitored.Open();
  RunOnThreads(2, [&](int thread) { (thread == 0 ? AddAndRemove<0> : AddAndRemove<1>)(monitored.monitor()); });
  EXPECT_EQ(0, g_unexpected) << "called after it was removed";
}

std::atomic<int> g_nested_calls{0};

void CallExports(int32_t event, int32_t task, uint32_t value) {
  CVEXOPrinterReadHelper* const monitor = g_monitor;
  g_unexpected += event == 2 && task == 1 && value == 2 ? 0 : 1;
  uint32_t number = 0;
  uint16_t status = 0;
  int64_t id = 0;
  // Some calls decode further events, which call this function again.
  if (++g_nested_calls % 50 == 1) {
    g_unexpected += GetDeviceStatus(monitor, &number) == 0 && number == ~3U ? 0 : 1;
    g_unexpected += SetClearPrintTask(monitor) == 0 ? 0 : 1;
  }
  g_unexpected += SetPrintTaskId(monitor, 1) == 0 && SetPaperFeed(monitor) == 0 ? 0 : 1;
  g_unexpected += GetStatusReport(monitor, &status, &number) == 999 ? 0 : 1;
  g_unexpected += AddReprintMonitorFun(monitor, CallExports, &id) == 0 ? 0 : 1;
}

TEST(MonitorThreads, ExportsAreCalledInCallbacksAndOnAnotherThread) {
  g_unexpected = 0;
  g_nested_calls = 0;
  MonitoredPrinter monitored;
  g_monitor = monitored.monitor();
  monitored.Add(CallExports);
  monitored.Open();
  std::thread other([&] {
    for (int round = 0; round < 100; ++round) {
      // A callback may query at the same time and take the answer.
      uint32_t status = ~3U;
      const int32_t result = GetDeviceStatus(monitored.monitor(), &status);
      EXPECT_TRUE(result == 0 || result == -7003) << result;
      EXPECT_EQ(~3U, status);
      EXPECT_EQ(0, SetPrintTaskId(monitored.monitor(), 2));
      EXPECT_EQ(0, SetPollingTime(monitored.monitor(), round));
    }
  });
  EXPECT_TRUE(Eventually([] { return g_nested_calls >= 2000; }));
  other.join();
  EXPECT_EQ(0, g_unexpected);
}

// Each command returns its own result, even if others fail at the same time.
TEST(MonitorThreads, CommandsOfSeveralThreadsGetTheirOwnResults) {
  constexpr int kRounds = 20000;
  constexpr uint32_t kFeedLength = 28;  // The other command has a different length.
  MonitoredPrinter monitored([](size_t /*room*/) { return std::string(); },
                             [](uint32_t length) { return length == kFeedLength ? -321 : 0; });
  monitored.Open();
  RunOnThreads(2, [&](int thread) {
    int wrong = 0;
    for (int round = 0; round < kRounds; ++round) {
      const bool feeds = thread == 0;
      const int32_t result = feeds ? SetPaperFeed(monitored.monitor()) : SetPrintTaskId(monitored.monitor(), 1);
      wrong += result == (feeds ? -321 : 0) ? 0 : 1;
    }
    EXPECT_EQ(0, wrong) << thread;
  });
}

TEST(MonitorThreads, AllExportsOnSeveralThreads) {
  MonitoredPrinter monitored(
      [](size_t /*room*/) { return Started("0001") + ValueReply(3) + Ended("0001", 2) + Frame(0x103, "?\x01"); });
  CVEXOPrinterReadHelper* const monitor = monitored.monitor();
  monitored.Open();
  const auto documented = [](int32_t result) { return result == 0 || result == -7003 || result == -7101; };
  RunOnThreads(6, [&](int thread) {
    for (int round = 0; round < 100; ++round) {
      uint16_t status = 0;
      uint32_t number = 0;
      int64_t id = 0;
      char word[8] = {};
      switch (thread) {
        case 0:
          EXPECT_TRUE(documented(SetClearPrintTask(monitor)));
          break;
        case 1:
          GetStatusReport(monitor, &status, &number);
          break;
        case 2:
          EXPECT_TRUE(documented(QueryReprintMonitorWork(monitor, word, sizeof(word))));
          break;
        case 3:
          EXPECT_TRUE(documented(GetDeviceStatus(monitor, &number)));
          EXPECT_TRUE(documented(ResetPrinterInteriorId(monitor, static_cast<uint32_t>(round % 2))));
          break;
        case 4:
          EXPECT_EQ(0, round % 2 == 0 ? CloseReprintMonitorWork(monitor) : OpenReprintMonitorWork(monitor));
          break;
        default:
          EXPECT_EQ(0, AddReprintMonitorFun(monitor, Count<0>, &id));
          EXPECT_EQ(0, RemoveReprintMonitorFun(monitor, id));
          break;
      }
    }
  });
}

// A command without an answer must not wait for a read on another thread.
TEST(MonitorThreads, CommandsAreSentDuringARead) {
  std::atomic<bool> sent{false};
  std::atomic<bool> reading{false};
  MonitoredPrinter monitored(
      [&](size_t /*room*/) {
        reading = true;
        EXPECT_TRUE(Eventually([&] { return sent.load(); })) << "the command waits for the reader";
        return std::string();
      },
      [&](uint32_t /*length*/) {
        sent = reading.load();
        return 0;
      });
  monitored.Open();
  EXPECT_TRUE(Eventually([&] { return reading.load(); }));
  EXPECT_EQ(0, SetPrintTaskId(monitored.monitor(), 7));
}

// Events with an even number are job starts. The others are job ends with the number as value.
constexpr uint32_t kEvents = 300'000;
std::atomic<uint32_t> g_events{0};
std::atomic<uint32_t> g_out_of_order{0};
std::atomic<int64_t> g_peak_bytes{0};

void CheckNext(int32_t event, int32_t task, uint32_t value) {
  const uint32_t number = g_events;
  const bool expected = event == static_cast<int32_t>(1 + number % 2) && task == static_cast<int32_t>(number % 10000) &&
                        value == (number % 2 == 0 ? 0 : number);
  g_out_of_order += expected ? 0 : 1;
  g_peak_bytes = std::max(g_peak_bytes.load(), AllocatedBytes());
  ++g_events;
}

TEST(MonitorThreads, FragmentedEventsArriveInOrderInBoundedMemory) {
  g_events = g_out_of_order = 0;
  std::mt19937 random(4711);
  std::string held_back;
  uint32_t printed = 0;
  const auto print = [&](size_t /*room*/) {
    std::string piece = std::exchange(held_back, {});
    for (uint32_t frames = random() % 16; frames > 0 && printed < kEvents; --frames, ++printed) {
      piece += std::string("noise\x1b\x1c& V1 report").substr(0, random() % 18);
      const size_t cut = piece.size() + random() % 17;  // Below 17 bytes: a longer fragment would be decoded early.
      const std::string task = std::to_string(10000 + printed % 10000).substr(1);
      piece += printed % 2 == 0 ? Started(task) : Ended(task, printed);
      if (frames == 1) {
        held_back = piece.substr(cut);
        piece.resize(cut);
      }
    }
    return piece;
  };
  const int64_t bytes_before = AllocatedBytes();
  MonitoredPrinter monitored(print);
  monitored.Add(CheckNext);
  monitored.Open();
  EXPECT_TRUE(Eventually([] { return g_events >= kEvents; })) << g_events;
  EXPECT_EQ(0U, g_out_of_order);
  EXPECT_LT(g_peak_bytes - bytes_before, 64 * 1024);
}

constexpr int kMonitors = 8;
std::atomic<int> g_events_of[kMonitors];

void CountTask(int32_t /*event*/, int32_t task, uint32_t /*value*/) { ++g_events_of[task]; }

TEST(MonitorThreads, MonitorsAreIndependentAndSurviveExceptionsOfTheirPorts) {
  constexpr int kEventsOfEach = 200;
  RunOnThreads(kMonitors, [](int task) {
    g_events_of[task] = 0;
    int reads = 0;
    MonitoredPrinter monitored([&](size_t /*room*/) -> std::string {
      if (++reads % 2 == 0) {
        throw std::runtime_error("error in a port object");
      }
      return reads < 2 * kEventsOfEach ? Started("000" + std::to_string(task)) : "";
    });
    monitored.Add(CountTask);
    monitored.Open();
    EXPECT_TRUE(Eventually([&] { return g_events_of[task] == kEventsOfEach; }));
  });
  for (const auto& events : g_events_of) {
    EXPECT_EQ(kEventsOfEach, events);
  }
}

}  // namespace
}  // namespace vexo::test
