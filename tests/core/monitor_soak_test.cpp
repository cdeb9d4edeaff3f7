// A printer that never stops: a million job events with junk between them, in pieces of any size.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <random>
#include <string>
#include <utility>

#include "monitor/printer_read_helper.h"
#include "support/allocation_faults.h"
#include "support/report_frames.h"
#include "support/stream_port.h"
#include "support/threads.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

constexpr uint32_t kEvents = 1'000'000;
constexpr size_t kEarlySize = 17;  // From here on a frame with a short payload counts as complete.

// Every second event is a start, the others are ends with the event's number as value.
std::string EventFrame(uint32_t number) {
  std::string task = std::to_string(10000 + number % 10000).substr(1);
  return number % 2 == 0 ? Started(task) : Ended(task, number);
}

class BusyPrinter {
 public:
  // Frames with junk before them. The last one is cut anywhere but behind those bytes with which it is taken all the
  // same; the rest comes next.
  std::string Next(size_t room) {
    std::string bytes = std::exchange(held_back_, {});
    for (uint32_t frames = Random() % 64; frames > 0 && printed_ < kEvents && bytes.size() < room / 2; --frames) {
      bytes += Junk();
      const size_t cut = bytes.size() + Random() % kEarlySize;
      bytes += EventFrame(printed_++);
      if (frames == 1) {
        held_back_ = bytes.substr(cut);
        bytes.resize(cut);
      }
    }
    return bytes;
  }

 private:
  std::string Junk() {
    static const std::string kHeader = "\x1b\x1c& V1 report";
    const uint32_t kind = Random() % 4;
    if (kind <= 1) {
      return kHeader.substr(0, kind * (Random() % kHeader.size()));
    }
    std::string noise(Random() % 40, '\0');
    std::generate(noise.begin(), noise.end(), [this] { return static_cast<char>(Random()); });
    return noise;
  }

  uint32_t Random() { return static_cast<uint32_t>(random_()); }

  std::mt19937 random_{4711};
  std::string held_back_;
  uint32_t printed_ = 0;
};

std::atomic<uint32_t> g_events{0};
std::atomic<uint32_t> g_out_of_order{0};
std::atomic<int64_t> g_most_bytes{0};

void Check(int32_t event, int32_t task, uint32_t value) {
  const uint32_t number = g_events;
  const bool expected = event == static_cast<int32_t>(1 + number % 2) && task == static_cast<int32_t>(number % 10000) &&
                        value == (number % 2 == 0 ? 0 : number);
  g_out_of_order += expected ? 0 : 1;
  if (number % 100 == 0) {
    g_most_bytes = std::max(g_most_bytes.load(), LivingBytes());
  }
  ++g_events;
}

TEST(MonitorSoak, MillionEventsArriveInOrderInFlatMemory) {
  constexpr int64_t kEnoughBytes = 64 * 1024;
  BusyPrinter printer;
  StreamPort port([&](size_t room) { return printer.Next(room); });
  VexoPrinterHandle handle = OpenHandle(&port);
  const int64_t bytes_before = LivingBytes();
  CVEXOPrinterReadHelper* const monitor = GetReprintMonitorObj();
  int64_t id = 0;
  ASSERT_EQ(0, RegisterPrinter(monitor, &handle));
  ASSERT_EQ(0, AddReprintMonitorFun(monitor, Check, &id));
  ASSERT_EQ(0, OpenReprintMonitorWork(monitor));
  EXPECT_TRUE(Eventually([] { return g_events >= kEvents; })) << g_events << " events";
  {
    const std::lock_guard<std::recursive_mutex> guard(monitor->io_lock());
    EXPECT_EQ(0U, monitor->queue().size());
  }
  EXPECT_EQ(0, DestroyReprintMonitorObj(monitor));
  EXPECT_EQ(kEvents, g_events);
  EXPECT_EQ(0U, g_out_of_order);
  EXPECT_LT(g_most_bytes - bytes_before, kEnoughBytes);
}

}  // namespace
}  // namespace vexo::test
