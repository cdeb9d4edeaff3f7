// Arguments and settings of the monitor, and which results become the last error.
#include <functional>
#include <stdexcept>

#include "monitor_fixture.h"
#include "support/allocation_faults.h"
#include "support/threads.h"

namespace vexo::test {
namespace {

using Step = ScriptedPort::Step;

const Step kThrowing = {0, {}, {}, [] { throw std::runtime_error("error in a port object"); }};

void Ignore(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {}

class MonitorObject : public MonitorTest {
 protected:
  // The call returns `result` and leaves `stored` as the last error.
  void ExpectResult(const char* call_text, int32_t result, int32_t stored, const std::function<int32_t()>& call) {
    StoreLastErrorCode(kUntouched);
    EXPECT_EQ(result, call()) << call_text;
    EXPECT_EQ(stored, GetLastErrorCode()) << call_text;
  }

  char text_[8] = {};
  uint16_t status_ = 0;
  uint32_t number_ = 0;
  int64_t id_ = 0;
};

#define EXPECT_RESULT(result, stored, call) ExpectResult(#call, result, stored, [&]() -> int32_t { return call; })
#define EXPECT_REFUSED(call) EXPECT_RESULT(-7002, -7002, call)

TEST_F(MonitorObject, NullArgumentsAreRefused) {
  Open();
  CVEXOPrinterReadHelper* const none = nullptr;
  EXPECT_REFUSED(DestroyReprintMonitorObj(none));
  EXPECT_REFUSED(RegisterPrinter(none, &handle_));
  EXPECT_REFUSED(RegisterPrinter(monitor_, nullptr));
  EXPECT_REFUSED(SelectSDKRepintType(none, 1));
  EXPECT_REFUSED(SetDelayTime(none, 1));
  EXPECT_REFUSED(SetReadTimeOut(none, 1));
  EXPECT_REFUSED(SetPollingTime(none, 1));
  EXPECT_REFUSED(OpenReprintMonitorWork(none));
  EXPECT_REFUSED(CloseReprintMonitorWork(none));
  EXPECT_REFUSED(QueryReprintMonitorWork(none, text_, 8));
  EXPECT_REFUSED(QueryReprintMonitorWork(monitor_, nullptr, 8));
  EXPECT_REFUSED(QueryReprintMonitorWork(monitor_, text_, 0));
  EXPECT_REFUSED(GetStatusReport(none, &status_, &number_));
  EXPECT_REFUSED(GetStatusReport(monitor_, nullptr, &number_));
  EXPECT_REFUSED(SetPrintTaskId(none, 1));
  EXPECT_REFUSED(SetClearPrintTask(none));
  EXPECT_REFUSED(GetDeviceStatus(none, &number_));
  EXPECT_REFUSED(GetDeviceStatus(monitor_, nullptr));
  EXPECT_REFUSED(SetPaperFeed(none));
  EXPECT_REFUSED(ResetPrinterInteriorId(none, 0));
  EXPECT_REFUSED(AddReprintMonitorFun(none, Ignore, &id_));
  EXPECT_REFUSED(AddReprintMonitorFun(monitor_, nullptr, &id_));
  EXPECT_REFUSED(AddReprintMonitorFun(monitor_, Ignore, nullptr));
  EXPECT_REFUSED(RemoveReprintMonitorFun(none, 1));
  EXPECT_TRUE(Sent().empty());
}

TEST_F(MonitorObject, ValuesOutOfRangeAreRefusedWhetherOrNotMonitoringIsOpen) {
  EXPECT_RESULT(-7101, kUntouched, SetPrintTaskId(monitor_, 1));
  EXPECT_RESULT(-7101, kUntouched, SetClearPrintTask(monitor_));
  EXPECT_RESULT(-7101, kUntouched, ResetPrinterInteriorId(monitor_, 0));
  EXPECT_TRUE(Sent().empty());
  for (int round = 0; round < 2; ++round) {
    EXPECT_REFUSED(SelectSDKRepintType(monitor_, 2));
    EXPECT_REFUSED(SetPrintTaskId(monitor_, 0));
    EXPECT_REFUSED(SetPrintTaskId(monitor_, 10000));
    EXPECT_REFUSED(ResetPrinterInteriorId(monitor_, 2));
    Open();
  }
  EXPECT_RESULT(0, kUntouched, SetPrintTaskId(monitor_, 1));
  EXPECT_EQ(kV1Prefix + "setval \"process_id\" \"0001\"\r\n", Sent().at(0)) << "the family changed";
}

TEST_F(MonitorObject, SuccessKeepsTheLastError) {
  EXPECT_RESULT(0, kUntouched, RegisterPrinter(monitor_, &handle_));
  EXPECT_RESULT(0, kUntouched, SetDelayTime(monitor_, -1));
  EXPECT_RESULT(0, kUntouched, OpenReprintMonitorWork(monitor_));
  EXPECT_RESULT(0, kUntouched, AddReprintMonitorFun(monitor_, Ignore, &id_));
  EXPECT_RESULT(0, kUntouched, RemoveReprintMonitorFun(monitor_, id_));
  EXPECT_RESULT(0, kUntouched, RemoveReprintMonitorFun(monitor_, 12345));
  PollWith(Started("0007"));
  EXPECT_RESULT(7, kUntouched, GetStatusReport(monitor_, &status_, &number_));
  EXPECT_RESULT(0, kUntouched, CloseReprintMonitorWork(monitor_));
  EXPECT_RESULT(999, 999, GetStatusReport(monitor_, &status_, &number_));
}

TEST_F(MonitorObject, FailureIsStoredExceptBySetPrintTaskId) {
  Open();
  const struct {
    std::function<int32_t()> call;
    bool receives;
    bool stores;
  } rows[] = {{[&] { return OpenReprintMonitorWork(monitor_); }, false, true},
              {[&] { return CloseReprintMonitorWork(monitor_); }, false, true},
              {[&] { return SetPaperFeed(monitor_); }, false, true},
              {[&] { return SetPrintTaskId(monitor_, 1); }, false, false},
              {[&] { return QueryReprintMonitorWork(monitor_, text_, 8); }, true, true},
              {[&] { return SetClearPrintTask(monitor_); }, true, true},
              {[&] { return GetDeviceStatus(monitor_, &number_); }, true, true},
              {[&] { return ResetPrinterInteriorId(monitor_, 1); }, true, true}};
  for (const auto& row : rows) {
    for (const int32_t code : {-321, 10054}) {
      port_.OnWrite({code});
      ExpectResult("sending", code, row.stores ? code : kUntouched, row.call);
    }
    if (row.receives) {
      port_.OnRead(kThrowing);
      ExpectResult("receiving", -300, -300, row.call);
    }
  }
  port_.OnWrite({-321});
  EXPECT_RESULT(-7003, -7003, ResetPrinterInteriorId(monitor_, 0));
  EXPECT_TRUE(RecordedSleeps().empty()) << "waited for an answer although sending failed";
}

TEST_F(MonitorObject, BindsOnlyAnOpenPrinter) {
  VexoPrinterHandle closed = {VEXO_PRINTER_MAGIC, nullptr, &port_, 0};
  EXPECT_RESULT(-309, -309, RegisterPrinter(monitor_, &closed));
  EXPECT_RESULT(-6, -6, SetPaperFeed(monitor_));
  EXPECT_RESULT(0, kUntouched, RegisterPrinter(monitor_, &handle_));
  EXPECT_RESULT(0, kUntouched, SetPaperFeed(monitor_));
  handle_.portOpen = 0;
  EXPECT_RESULT(-309, -309, OpenReprintMonitorWork(monitor_));
  EXPECT_RESULT(-7101, kUntouched, SetPrintTaskId(monitor_, 1));
}

TEST_F(MonitorObject, WriteThatTimedOutIsRepeatedOnce) {
  constexpr int32_t kThrows = 1;
  const std::pair<std::vector<int32_t>, int32_t> rows[] = {
      {{-322, 0}, 0}, {{-322, -322}, -322}, {{-322, -321}, -321}, {{kThrows}, -321}, {{-322, kThrows}, -322}};
  for (const auto& [results, expected] : rows) {
    ScriptedPort port;
    for (const int32_t result : results) {
      port.OnWrite(result == kThrows ? kThrowing : Step{result});
    }
    handle_.port = &port;
    EXPECT_EQ(expected, SetPaperFeed(monitor_));
    EXPECT_EQ(results.size(), port.Written().size());
  }
}

TEST_F(MonitorObject, AllocationFailureLosesNoReport) {
  constexpr int kReports = 20;  // More than the queue's initial capacity.
  std::string reports;
  for (int report = 0; report < kReports; ++report) {
    reports += Started("0007");
  }
  Open();
  bool failed = true;
  for (uint32_t nth = 1; failed; ++nth) {
    SCOPED_TRACE(nth);
    QueueRead(reports);
    QueueRead(ValueReply(5));
    AllocationFault fault(nth);
    const int32_t result = GetDeviceStatus(monitor_, &number_);
    failed = fault.Lift();
    EXPECT_EQ(failed ? -9 : 0, result);
    for (int pass = 0; pass < 4; ++pass) {
      monitor_->Poll(0);
    }
    for (int report = 0; report < kReports; ++report) {
      EXPECT_EQ("task 7 status 1", TakeReport());
    }
    EXPECT_EQ("none", TakeReport());
  }
}

// While monitoring is closed, the reader only sleeps.
TEST_F(MonitorObject, ReaderSleepsInSlicesAndDoesNotReadWhileClosed) {
  const auto pauses = [this](size_t count) {
    held_.Release();
    EXPECT_TRUE(Eventually([=] { return RecordedSleeps().size() >= count; }));
    const std::vector<uint32_t> sleeps = RecordedSleeps();
    return std::vector<uint32_t>(sleeps.begin(), sleeps.begin() + static_cast<ptrdiff_t>(count));
  };
  EXPECT_EQ(std::vector<uint32_t>(10, 100), pauses(10));
  EXPECT_TRUE(port_.Operations().empty());
  SetPollingTime(monitor_, 250);
  SetClock(0);
  const std::vector<uint32_t> sliced = pauses(12);  // Sliced, so that a stop request is noticed early.
  const std::vector<uint32_t> twice = {100, 100, 50, 100, 100, 50};
  EXPECT_NE(std::search(sliced.begin(), sliced.end(), twice.begin(), twice.end()), sliced.end());
  EXPECT_TRUE(port_.Operations().empty());
}

TEST_F(MonitorObject, PollWithoutDataAllocatesNothing) {
  Open();
  PollWith("");
  AllocationFault fault(1);
  monitor_->Poll(0);
  EXPECT_FALSE(fault.Lift());
}

}  // namespace
}  // namespace vexo::test
