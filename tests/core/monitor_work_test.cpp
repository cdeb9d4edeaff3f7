// Opening, closing and querying job monitoring, and the event queue.
#include <stdexcept>

#include "monitor_fixture.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Step = ScriptedPort::Step;
using Sleeps = std::vector<uint32_t>;
using Texts = std::vector<std::string>;

class MonitorWork : public MonitorTest {
 protected:
  // The text, or the error code.
  std::string Query(int32_t length) {
    char buffer[8] = "#######";
    const int32_t result = QueryReprintMonitorWork(monitor_, buffer, length);
    if (result != 0) {
      EXPECT_STREQ("#######", buffer);
      return std::to_string(result);
    }
    return std::string(buffer, std::string_view(buffer).find('#'));
  }
};

TEST_F(MonitorWork, SwitchesThePrinter) {
  const std::tuple<uint32_t, std::string, std::string, Sleeps> rows[] = {
      {1, kV1Prefix + "setval \"job_monitor\" \"on\"\r\n", kV1Prefix + "setval \"job_monitor\" \"off\"\r\n", {}},
      {0, "\x1d(H\x03\0"s + "102", "\x1d(H\x03\0"s + "100", {300}}};
  for (const auto& [family, on, off, before_off] : rows) {
    SetClock(0);
    SelectSDKRepintType(monitor_, family);
    EXPECT_EQ(0, OpenReprintMonitorWork(monitor_));
    EXPECT_EQ(Texts{on}, Sent());
    EXPECT_EQ(Sleeps{}, RecordedSleeps());
    EXPECT_EQ(0, CloseReprintMonitorWork(monitor_));
    EXPECT_EQ(Texts{off}, Sent());
    EXPECT_EQ(before_off, RecordedSleeps());
  }
}

TEST_F(MonitorWork, CloseDropsReceivedDataUnlessItFails) {
  Open(0);
  PollWith("7\"0012\0"s + Ended("0001", 2) + ValueReply(3) + Started("0002").substr(0, 16));
  port_.OnWrite({-321});
  EXPECT_EQ(-321, CloseReprintMonitorWork(monitor_));
  EXPECT_EQ("task 12 status 1", TakeReport());
  EXPECT_EQ(0, CloseReprintMonitorWork(monitor_));
  Open(0);
  PollWith(Started("0002").substr(16) + "7#\0"s);
  EXPECT_EQ("task 0 status 2 value 4294967295", TakeReport()) << "the running job was forgotten";
  EXPECT_EQ("none", TakeReport());
}

TEST_F(MonitorWork, QueryWithV1CommandsAsksThePrinter) {
  const struct {
    std::string payload;
    int32_t length;
    std::string answer;
  } rows[] = {{"", 8, "off"},           {"?\x01", 2, "on"},         {"?\x01", 1, "-7007"}, {"?\0"s, 3, "off"},
              {"?\0"s, 2, "of"},        {"?\x02", 8, "off"},        {"?", 1, "o"},         {"?\x01", -1, "-7007"},
              {"?\x01_23456", 8, "on"}, {"?\x01_23456", 7, "-7007"}};
  for (const auto& row : rows) {
    QueueRead(Frame(0x103, "?"));  // Received before the query, so not its answer.
    QueueRead(Frame(0x103, row.payload));
    EXPECT_EQ(row.answer, Query(row.length)) << testing::PrintToString(row.payload);
    EXPECT_EQ(Texts{kV1Prefix + "getval \"job_monitor\"\r\n"}, Sent());
  }
  EXPECT_EQ(-7007, GetLastErrorCode());
}

TEST_F(MonitorWork, QueryPollsTwiceForTheAnswer) {
  EXPECT_EQ("-7003", Query(8));
  EXPECT_EQ(Sleeps(18, 20), RecordedSleeps()) << "two polls of 200 ms, each with a sleep after every receive but one";
  EXPECT_EQ(-7003, GetLastErrorCode());

  // One receive before the query and ten in each poll.
  const std::string answer = Frame(0x103, "?\x01");
  for (const auto& [silent_receives, result] : {std::pair(1, "on"), std::pair(10, "on"), std::pair(11, "-7003")}) {
    for (int receive = 0; receive < silent_receives; ++receive) {
      QueueRead("");
    }
    QueueRead(answer);
    EXPECT_EQ(result, Query(8)) << silent_receives;
  }
}

TEST_F(MonitorWork, QueryWithGsCommandsAnswersFromTheMonitorsState) {
  SelectSDKRepintType(monitor_, 0);
  EXPECT_EQ("off", Query(8));
  Open(0);
  const size_t operations = port_.Operations().size();
  EXPECT_EQ("on", Query(2));
  EXPECT_EQ("o", Query(1));
  EXPECT_EQ("", Query(-1));
  EXPECT_EQ(operations, port_.Operations().size());
}

TEST_F(MonitorWork, EventsAreQueuedInOrderWithInvertedValues) {
  PollWith(Frame(0x102, "?0003") + Started("0007") + ValueReply(1) + Ended("0007", 0) + Started("0999") +
           Ended("-001", 5));
  EXPECT_EQ("task 7 status 1", TakeReport());
  EXPECT_EQ(RecordKind::kEmpty, monitor_->TakeReply().kind) << "taking an event drops pending replies";
  EXPECT_EQ("task 7 status 2 value 4294967295", TakeReport());
  uint16_t status = 0;
  EXPECT_EQ(999, GetStatusReport(monitor_, &status, nullptr));
  EXPECT_EQ(1, status);
  EXPECT_EQ(-1, GetStatusReport(monitor_, &status, nullptr));
  EXPECT_EQ(kUntouched, GetLastErrorCode());
  EXPECT_EQ("none", TakeReport());
}

// A printer may send without end while the host takes nothing.
TEST_F(MonitorWork, AllEventsAndTheLatestRepliesAreKept) {
  for (uint32_t reply = 0; reply < 3000; ++reply) {
    PollWith(ValueReply(reply) + (reply % 2 == 0 ? Started("0007") : ""));
  }
  EXPECT_EQ(1500U + 1024U, monitor_->CountWaiting());
  for (uint32_t reply = 3000 - 1024; reply < 3000; ++reply) {
    ASSERT_EQ(reply, monitor_->TakeReply().value);
  }
  EXPECT_EQ(RecordKind::kEmpty, monitor_->TakeReply().kind);
  for (int event = 0; event < 1500; ++event) {
    ASSERT_EQ("task 7 status 1", TakeReport());
  }
  EXPECT_EQ("none", TakeReport());
}

TEST_F(MonitorWork, EventOfTheOtherFamilyIsDropped) {
  PollWith(Started("0007"));
  SelectSDKRepintType(monitor_, 0);
  PollWith("7\"0012\0"s);
  EXPECT_EQ("none", TakeReport());
  EXPECT_EQ(kUntouched, GetLastErrorCode());
  EXPECT_EQ("task 12 status 1", TakeReport());
}

TEST_F(MonitorWork, GsMonitorQueriesTheValueOfAJobEnd) {
  const Step throws = {0, {}, {}, [] { throw std::runtime_error("error in a port object"); }};
  const std::tuple<Step, Step, uint32_t, Sleeps> rows[] = {{{}, {0, BytesOf("\x05\x01\0\0\x09"s)}, 0x105, {}},
                                                           {{}, {0, BytesOf("\xff\xff\xff\xff")}, 0xFFFFFFFF, {}},
                                                           {{}, {0, BytesOf("\x05\x01")}, 0x105, {}},
                                                           {{}, {0, BytesOf(ValueReply(3))}, 0x20261C1B, {}},
                                                           {{}, {}, 0, {20, 20}},
                                                           {{}, throws, 0, {}},
                                                           {{-321}, {}, 0, {}}};
  Open(0);
  SetReadTimeOut(monitor_, 60);
  PollWith("7\"0012\0"s);
  EXPECT_EQ("task 12 status 1", TakeReport());
  for (const auto& [sent, answer, value, sleeps] : rows) {
    SetClock(0);
    port_.OnWrite(sent);
    QueueRead("7#7");
    port_.OnRead(answer);
    monitor_->Poll(0);
    EXPECT_EQ(Texts{kV1Prefix + "getval \"reprint_status\"\r\n"}, Sent());
    EXPECT_EQ("task 12 status 2 value " + std::to_string(~value), TakeReport());
    EXPECT_EQ(sleeps, RecordedSleeps());
    monitor_->Poll(0);
    EXPECT_EQ(RecordKind::kEmpty, monitor_->TakeReply().kind) << "the answer was also decoded as a report";
  }
  PollWith("7$7");
  PollWith("7#7");
  EXPECT_EQ("task 0 status 2 value 4294967295", TakeReport()) << "the task numbering was reset";
}

}  // namespace
}  // namespace vexo::test
