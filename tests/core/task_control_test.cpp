// Task numbers, pending tasks and printer state: the commands sent and the time limits for answers.
#include <numeric>

#include "monitor_fixture.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Texts = std::vector<std::string>;

uint32_t SleptMs() {
  const std::vector<uint32_t> sleeps = RecordedSleeps();
  return std::accumulate(sleeps.begin(), sleeps.end(), 0U);
}

class TaskControl : public MonitorTest {
 protected:
  size_t Receives() const {
    const std::vector<std::string> operations = port_.Operations();
    return static_cast<size_t>(std::count(operations.begin(), operations.end(), "ReadAvailable(0, 2048)"));
  }
};

TEST_F(TaskControl, SendsItsCommands) {
  const std::tuple<uint32_t, int32_t, std::string, std::string> rows[] = {
      {1, 7, kV1Prefix + "setval \"process_id\" \"0007\"\r\n", "\x1b\x1c&cl"},
      {0, 9999, "\x1d(H\x06\0"s + "009999", "\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08"}};
  SetReadTimeOut(monitor_, 0);
  for (const auto& [family, task, tag, clear] : rows) {
    Open(family);
    EXPECT_EQ(0, SetPrintTaskId(monitor_, task));
    EXPECT_EQ(-7003, SetClearPrintTask(monitor_));
    uint32_t status = 0;
    EXPECT_EQ(-7003, GetDeviceStatus(monitor_, &status));
    EXPECT_EQ(0, SetPaperFeed(monitor_));
    EXPECT_EQ(-7003, ResetPrinterInteriorId(monitor_, 0));
    EXPECT_EQ(-7003, ResetPrinterInteriorId(monitor_, 1));
    EXPECT_EQ((Texts{tag, clear, kV1Prefix + "getval \"reprint_status\"\r\n", kV1Prefix + "do \"print_feedform\"\r\n",
                     "\x1d(H\x03\0"s + "200", "\x1d(H\x03\0"s + "200\n"}),
              Sent());
  }
}

// Without an answer there are three polls. Each sleeps 20 ms after every receive but the first.
TEST_F(TaskControl, WaitsThreeReadTimeoutsForTheAnswer) {
  const std::pair<int64_t, size_t> rows[] = {{-1000, 1}, {30, 1}, {40, 2}, {1000, 50}};
  uint32_t status = 0;
  const std::pair<size_t, std::function<int32_t()>> calls[] = {{3, [&] { return SetClearPrintTask(monitor_); }},
                                                               {3, [&] { return ResetPrinterInteriorId(monitor_, 1); }},
                                                               {0, [&] { return ResetPrinterInteriorId(monitor_, 0); }},
                                                               {1, [&] { return GetDeviceStatus(monitor_, &status); }}};
  Open();
  for (const auto& [read_timeout, receives_per_poll] : rows) {
    SetReadTimeOut(monitor_, read_timeout);
    for (const auto& [polls, call] : calls) {
      SetClock(0);
      const size_t before = Receives();
      EXPECT_EQ(-7003, call());
      EXPECT_EQ(1 + polls * receives_per_poll, Receives() - before) << read_timeout;
      EXPECT_EQ(polls * (receives_per_poll - 1) * 20, SleptMs()) << read_timeout;
    }
  }
}

TEST_F(TaskControl, AnswerEndsTheWait) {
  Open();
  SetReadTimeOut(monitor_, 100);
  // One receive before the command and five in each of three polls. The answer in the last poll is not used.
  for (const auto& [silent_receives, result] : {std::pair(1, 0), std::pair(10, 0), std::pair(11, -7003)}) {
    for (int receive = 0; receive < silent_receives; ++receive) {
      QueueRead("");
    }
    QueueRead(Frame(0x103, "?"));
    EXPECT_EQ(result, SetClearPrintTask(monitor_)) << silent_receives;
  }
}

TEST_F(TaskControl, EarlierAnswersAndEventsAreNotTheAnswer) {
  Open();
  SetReadTimeOut(monitor_, 0);
  for (const bool clear : {true, false}) {
    PollWith(ValueReply(1));
    QueueRead(ValueReply(2) + Started("0007"));
    EXPECT_EQ(-7003, clear ? SetClearPrintTask(monitor_) : ResetPrinterInteriorId(monitor_, 0));
    EXPECT_EQ("task 7 status 1", TakeReport());
  }
  EXPECT_EQ(-7003, GetLastErrorCode());
}

TEST_F(TaskControl, DeviceStatusIsInverted) {
  const struct {
    std::string answer;
    uint32_t status;
  } rows[] = {{ValueReply(5), 0xFFFFFFFA},
              {ValueReply(0xFFFFFFFF), 0},
              {Frame(0x104, "?\x05"), 0xFFFFFFFF},
              {ValueReply(5) + ValueReply(6), 0xFFFFFFFA}};
  for (const auto& row : rows) {
    uint32_t status = 1;
    QueueRead("");
    QueueRead(row.answer);
    EXPECT_EQ(0, GetDeviceStatus(monitor_, &status));
    EXPECT_EQ(row.status, status);
  }
}

}  // namespace
}  // namespace vexo::test
