// Fixture with a monitor on a scripted port. The reader thread is stopped, so that tests are deterministic.
#ifndef VEXO_TESTS_CORE_MONITOR_FIXTURE_H_
#define VEXO_TESTS_CORE_MONITOR_FIXTURE_H_

#include "core/core_test.h"
#include "monitor/last_error.h"
#include "monitor/printer_read_helper.h"

namespace vexo::test {

inline const std::string kV1Prefix = "\x1b\x1c& V1 ";

class MonitorTest : public ::testing::Test {
 protected:
  static constexpr int32_t kUntouched = 4711;

  MonitorTest() {
    EXPECT_NE(nullptr, monitor_);
    EXPECT_TRUE(held_.Await(1));
    EXPECT_EQ(0, RegisterPrinter(monitor_, &handle_));
    SetClock(0);
    StoreLastErrorCode(kUntouched);
  }

  ~MonitorTest() override {
    held_.Release();
    EXPECT_EQ(0, DestroyReprintMonitorObj(monitor_));
  }

  void Open(uint32_t family = 1) {
    ASSERT_EQ(0, SelectSDKRepintType(monitor_, family));
    ASSERT_EQ(0, OpenReprintMonitorWork(monitor_));
    written_before_ = port_.Written().size();
  }

  void QueueRead(const std::string& bytes, int32_t result = VEXO_OK) { port_.OnRead({result, BytesOf(bytes)}); }

  // One poll, as by the reader thread, that receives `bytes`.
  void PollWith(const std::string& bytes) {
    QueueRead(bytes);
    monitor_->Poll(0);
  }

  // Writes since Open or since the last call.
  std::vector<std::string> Sent() {
    std::vector<std::string> sent;
    const std::vector<Bytes> written = port_.Written();
    for (; written_before_ < written.size(); ++written_before_) {
      sent.emplace_back(written[written_before_].begin(), written[written_before_].end());
    }
    return sent;
  }

  // "task 7 status 2 value 5", "task 7 status 1"; "none" if there is no event.
  std::string TakeReport() {
    uint16_t status = 99;
    uint32_t value = kUntouched;
    const int32_t task = GetStatusReport(monitor_, &status, &value);
    if (task == VEXO_MONITOR_NO_EVENT) {
      EXPECT_EQ(99, status);
      return "none";
    }
    return "task " + std::to_string(task) + " status " + std::to_string(status) +
           (value != kUntouched ? " value " + std::to_string(value) : "");
  }

  HeldSleepers held_;
  ScriptedPort port_;
  VexoPrinterHandle handle_ = OpenHandle(&port_);
  CVEXOPrinterReadHelper* const monitor_ = GetReprintMonitorObj();
  size_t written_before_ = 0;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_MONITOR_FIXTURE_H_
