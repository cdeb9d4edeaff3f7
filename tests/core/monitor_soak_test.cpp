// A printer that never stops: a million job events with junk between them, in pieces of any size.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <random>
#include <string>

#include "monitor/printer_read_helper.h"
#include "support/allocation_faults.h"
#include "support/eventually.h"
#include "support/report_frames.h"
#include "support/stream_port.h"
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
  // Pieces end anywhere but in those bytes of a frame without which it is taken all the same.
  std::string Next(size_t room) {
    if (sent_ == ready_.size()) {
      PrintMore();
    }
    const size_t most = std::min(room, ready_.size() - sent_);
    size_t size = most == 0 ? 0 : 1 + Random() % most;
    while (size > 0 && size < most && is_bound_[sent_ + size]) {
      ++size;
    }
    while (size > 0 && sent_ + size < ready_.size() && is_bound_[sent_ + size]) {
      --size;
    }
    const std::string piece = ready_.substr(sent_, size);
    sent_ += size;
    return piece;
  }

 private:
  void PrintMore() {
    ready_.clear();
    is_bound_.clear();
    sent_ = 0;
    for (int frame = 0; frame < 100 && printed_ < kEvents; ++frame) {
      AppendJunk();
      const std::string bytes = EventFrame(printed_++);
      ready_ += bytes;
      is_bound_.resize(ready_.size() - bytes.size() + kEarlySize, false);
      is_bound_.resize(ready_.size(), true);
    }
  }

  void AppendJunk() {
    static const std::string kHeader = "\x1b\x1c& V1 report";
    switch (Random() % 4) {
      case 0:
        break;
      case 1:
        ready_ += kHeader.substr(0, Random() % kHeader.size());
        break;
      default:
        for (uint32_t left = Random() % 40; left > 0; --left) {
          ready_ += static_cast<char>(Random());
        }
    }
    is_bound_.resize(ready_.size(), false);
  }

  uint32_t Random() { return static_cast<uint32_t>(random_()); }

  std::mt19937 random_{4711};
  std::string ready_;
  std::vector<bool> is_bound_;  // To the byte before it.
  size_t sent_ = 0;
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
