// How long a Read on a device file waits for what, and what it makes of the bytes.
#include "windows/file_port_fixture.h"

namespace vexo {
namespace {

using test::Milliseconds;
using test::PipePort;
using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::Time;

class FileReadTest : public test::FilePortTest {
 protected:
  // A port with a read budget of `budget` whatever the length is.
  void OpenWithBudget(uint32_t budget, uint32_t interval = 10) {
    OpenOnPipe<PipePort>();
    EXPECT_EQ(port_->SetTimeouts(port_, {interval, 0, budget, 10, 2000, 1000}), VEXO_OK);
  }
};

TEST_F(FileReadTest, SilenceEndsAfterTheBudget) {
  OpenOnPipe<PipePort>();
  EXPECT_EQ(Read(port_, 20), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  EXPECT_EQ(Time().waits, Milliseconds({5 * 20 + 2000}));

  OpenOnPipe<PipePort>();
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 3, 7, 10, 2000, 1000}), VEXO_OK);
  EXPECT_EQ(Read(port_, 20), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  EXPECT_EQ(Time().waits, Milliseconds({3 * 20 + 7}));
}

TEST_F(FileReadTest, DataInPiecesIsPutTogether) {
  OpenOnPipe<PipePort>();
  SendLater(1500, "abcd");
  SendLater(10, "efghij");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 10, "abcdefghij"));
  EXPECT_EQ(Time().waits, Milliseconds({2050, 10}));
  EXPECT_EQ(Time().sleeps, Milliseconds());
}

TEST_F(FileReadTest, SilenceAfterTheFirstBytesEndsAfterTheInterval) {
  OpenOnPipe<PipePort>();
  SendLater(1500, "abcd");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 4, "abcd"));
  EXPECT_EQ(Time().waits, Milliseconds({2050, 10}));
}

// Systems wake threads late, so a piece may come in time for its wait and yet behind the interval.
TEST_F(FileReadTest, PieceBehindTheIntervalIsTheLast) {
  const struct {
    uint32_t gap;
    Milliseconds waits;
  } kCases[] = {{10, {2100, 10, 10}}, {11, {2100, 10}}};
  for (const auto& [gap, waits] : kCases) {
    SCOPED_TRACE(gap);
    OpenOnPipe<PipePort>();
    SendLater(1500, "abcd");
    SendLater(gap, "ef");
    EXPECT_EQ(Read(port_, 20), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 6, "abcdef"));
    EXPECT_EQ(Time().waits, waits);
  }
}

TEST_F(FileReadTest, BudgetLimitsFlowingDataToo) {
  const struct {
    uint32_t gap;
    Milliseconds waits;
  } kCases[] = {{10, {100, 60, 60}}, {11, {100, 60}}};
  for (const auto& [gap, waits] : kCases) {
    SCOPED_TRACE(gap);
    OpenWithBudget(100, 60);
    SendLater(90, "ab");
    SendLater(gap, "cd");
    EXPECT_EQ(Read(port_, 20), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 4, "abcd"));
    EXPECT_EQ(Time().waits, waits);
  }
}

TEST_F(FileReadTest, FivePiecesAreTheMost) {
  OpenOnPipe<PipePort>();
  for (const char* piece : {"ab", "cd", "ef", "gh", "ij", "kl"}) {
    SendLater(5, piece);
  }
  EXPECT_EQ(Read(port_, 20), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 10, "abcdefghij"));
  EXPECT_EQ(Time().waits, Milliseconds({2100, 10, 10, 10, 10}));
}

// Some devices complete every read at once, with nothing, until the printer has an answer.
TEST_F(FileReadTest, EmptyAnswersSpreadOverTheBudget) {
  const struct {
    uint32_t budget;
    Milliseconds sleeps;
  } kCases[] = {{2000, {100, 100, 100, 100}}, {100, {25, 25, 25, 25}}, {40, {10, 10, 10, 10}}};
  for (const auto& [budget, sleeps] : kCases) {
    SCOPED_TRACE(budget);
    OpenWithBudget(budget);
    for (int packet = 0; packet < 6; ++packet) {
      printer_->Send("");
    }
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().sleeps, sleeps);
  }
}

TEST_F(FileReadTest, EmptyAnswerThatTookLongIsNotFollowedByAPause) {
  const struct {
    uint32_t after;
    Milliseconds waits;
    Milliseconds sleeps;
  } kCases[] = {{99, {1000, 901}, {100}}, {100, {1000, 900}, {}}};
  for (const auto& [after, waits, sleeps] : kCases) {
    SCOPED_TRACE(after);
    OpenWithBudget(1000);
    SendLater(after, "");
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().waits, waits);
    EXPECT_EQ(Time().sleeps, sleeps);
  }
}

TEST_F(FileReadTest, RestBelowTenMillisecondsIsNotWaitedFor) {
  const struct {
    uint32_t after;
    Milliseconds waits;
  } kCases[] = {{90, {100, 10}}, {91, {100}}};
  for (const auto& [after, waits] : kCases) {
    SCOPED_TRACE(after);
    OpenWithBudget(100);
    SendLater(after, "");
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().waits, waits);
  }
}

TEST_F(FileReadTest, BytesThatArriveWithTheEndOfTheWaitAreNotLost) {
  OpenOnPipe<PipePort>();
  SendLater(2020, "abcd", /*too_late=*/true);
  EXPECT_EQ(Read(port_, 4), Reading(VEXO_OK, 4, "abcd"));
}

TEST_F(FileReadTest, AbortStopsBeforeTheNextAttempt) {
  OpenOnPipe<PipePort>();
  Time().happenings.push_back({1, [this] {
                                 EXPECT_EQ(port_->Abort(port_), VEXO_OK);
                                 printer_->Send("ab");
                               }});
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 2, "ab"));
  printer_->Send("cd");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 0, ""));
}

TEST_F(FileReadTest, SystemErrorsArePassedOn) {
  OpenOnPipe<PipePort>();
  SendLater(1, "ab");
  Time().happenings.push_back({1, [this] { printer_->Unplug(); }});
  EXPECT_EQ(Read(port_, 10), Reading(ERROR_BROKEN_PIPE, 2, "ab"));
  EXPECT_EQ(Read(port_, 10), Reading(ERROR_BROKEN_PIPE, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 10), Reading(ERROR_BROKEN_PIPE, 0, ""));
}

TEST_F(FileReadTest, ReadAvailableWaitsOnce) {
  OpenOnPipe<PipePort>();
  EXPECT_EQ(ReadAvailable(port_, 10), Reading(VEXO_OK, 0, ""));
  SendLater(99, "abcd");
  EXPECT_EQ(ReadAvailable(port_, 10), Reading(VEXO_OK, 4, "abcd"));
  SendLater(100, "efgh", /*too_late=*/true);
  EXPECT_EQ(ReadAvailable(port_, 3), Reading(VEXO_OK, 3, "efg"));
  EXPECT_EQ(ReadAvailable(port_, 3), Reading(VEXO_OK, 1, "h"));
  EXPECT_EQ(Time().waits, Milliseconds({100, 100, 100}));

  EXPECT_EQ(test::ReadWith(&VexoPort::ReadAvailable, port_, 10, test::kOffset - 1),
            Reading(VEXO_ERROR_PARAMETER, 0, ""));
}

}  // namespace
}  // namespace vexo
