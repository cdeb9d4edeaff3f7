#include "port/transfer_pacing.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/virtual_clock.h"

namespace vexo {
namespace {

using Sleeps = std::vector<uint32_t>;

// A read budget of `budget` ms, a read interval of 20 ms.
VexoPortTimeouts ReadLimits(uint32_t budget) { return {20, 0, budget, 0, 0, 0}; }

// Close before the tick count wraps around: whatever is measured here is measured across that moment.
class Pacing : public ::testing::Test {
 protected:
  void SetUp() override { test::SetClock(0xFFFFFFFF); }
};

using ReadPacingTest = Pacing;
using WritePacingTest = Pacing;

// One attempt that lasts `milliseconds` and brings `bytes`.
bool Attempt(ReadPacing* pacing, uint32_t milliseconds, uint32_t bytes) {
  EXPECT_TRUE(pacing->StartAttempt());
  test::AdvanceClock(milliseconds);
  return pacing->EndAttempt(bytes);
}

TEST(TransferBudget, GrowsWithTheLengthAndNeverMeansForever) {
  EXPECT_EQ(2050U, TransferBudget(5, 10, 2000));
  EXPECT_EQ(0U, TransferBudget(0, 10, 0));
  EXPECT_EQ(0xFFFFFFFEU, TransferBudget(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF));
  EXPECT_EQ(0xFFFFFFFEU, TransferBudget(0, 1, 0xFFFFFFFF));
  EXPECT_EQ(0xFFFFFFFEU, TransferBudget(0x10000, 0x10000, 0));
}

TEST_F(ReadPacingTest, FiveAttempts) {
  ReadPacing pacing(ReadLimits(1000), 10);
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(Attempt(&pacing, 0, 1));
  }
  EXPECT_FALSE(pacing.StartAttempt());
}

// A device that completes every read at once and with nothing is given time in between: its share of what is left, at
// most 100 ms, and never after the last attempt.
TEST_F(ReadPacingTest, PausesShareWhatIsLeft) {
  for (const auto& [budget, pause] : {std::pair<uint32_t, uint32_t>{60, 15}, {400, 100}, {2000, 100}}) {
    SetUp();
    ReadPacing pacing(ReadLimits(budget), 10);
    while (pacing.StartAttempt() && pacing.EndAttempt(0)) {
      pacing.Pause();
    }
    EXPECT_EQ(Sleeps(4, pause), test::RecordedSleeps());
  }
}

TEST_F(ReadPacingTest, NoPauseAfterAnAttemptThatWaitedOrOnceDataFlows) {
  ReadPacing waited(ReadLimits(2000), 10);
  EXPECT_TRUE(Attempt(&waited, 100, 0));
  waited.Pause();
  EXPECT_EQ(Sleeps{}, test::RecordedSleeps());
  EXPECT_TRUE(Attempt(&waited, 99, 0));
  waited.Pause();
  EXPECT_EQ(Sleeps{100}, test::RecordedSleeps());

  ReadPacing flowing(ReadLimits(2000), 10);
  EXPECT_TRUE(Attempt(&flowing, 0, 1));
  flowing.Pause();
  EXPECT_TRUE(Attempt(&flowing, 0, 0));
  flowing.Pause();
  EXPECT_EQ(Sleeps{100}, test::RecordedSleeps());
}

TEST_F(ReadPacingTest, LastTenMillisecondsAreNotWaitedFor) {
  ReadPacing patient(ReadLimits(100), 10);
  EXPECT_TRUE(Attempt(&patient, 90, 0));
  EXPECT_EQ(10U, patient.wait());

  ReadPacing used_up(ReadLimits(100), 10);
  EXPECT_FALSE(Attempt(&used_up, 91, 0));

  // The pauses count, too.
  ReadPacing paused(ReadLimits(100), 10);
  EXPECT_TRUE(Attempt(&paused, 0, 0));
  test::AdvanceClock(91);
  EXPECT_FALSE(Attempt(&paused, 0, 0));
}

TEST_F(ReadPacingTest, DataMayComeUntilTheBudgetIsSpent) {
  ReadPacing in_time(ReadLimits(100), 10);
  EXPECT_TRUE(Attempt(&in_time, 100, 1));

  ReadPacing late(ReadLimits(100), 10);
  EXPECT_FALSE(Attempt(&late, 101, 1));
}

// Each further piece has the read interval of 20 ms; the first one may come later.
TEST_F(ReadPacingTest, OnceDataFlowsTheIntervalCounts) {
  ReadPacing steady(ReadLimits(1000), 10);
  EXPECT_TRUE(Attempt(&steady, 500, 1));
  EXPECT_EQ(20U, steady.wait());
  EXPECT_TRUE(Attempt(&steady, 20, 1));
  EXPECT_EQ(20U, steady.wait());
  EXPECT_FALSE(Attempt(&steady, 21, 1));

  ReadPacing silent(ReadLimits(1000), 10);
  EXPECT_TRUE(Attempt(&silent, 0, 1));
  EXPECT_TRUE(Attempt(&silent, 10, 0));
  EXPECT_FALSE(Attempt(&silent, 11, 0));
}

TEST_F(ReadPacingTest, BudgetGrowsWithTheLengthAndNoWaitIsForever) {
  EXPECT_EQ(2050U, ReadPacing({10, 5, 2000, 0, 0, 0}, 10).wait());
  ReadPacing pacing({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0, 0}, 10);
  EXPECT_EQ(0xFFFFFFFEU, pacing.wait());
  EXPECT_TRUE(Attempt(&pacing, 0, 1));
  EXPECT_EQ(0xFFFFFFFEU, pacing.wait());
}

TEST_F(WritePacingTest, AllWaitsShareTheBudget) {
  WritePacing pacing({0, 0, 0, 10, 2000, 0}, 5);
  EXPECT_EQ(2050U, pacing.StartTransfer());
  test::AdvanceClock(500);
  pacing.EndTransfer();
  EXPECT_EQ(1550U, pacing.StartTransfer());
  test::AdvanceClock(500);
  EXPECT_TRUE(pacing.EndPartialTransfer(5));
  EXPECT_EQ(1050U, pacing.StartTransfer());
  test::AdvanceClock(1051);
  pacing.EndTransfer();
  EXPECT_EQ(0U, pacing.StartTransfer());
}

// A chunk of 100 bytes has 200 ms, of a call that has 1100. Time spent on parts of earlier chunks counts, that on whole
// chunks does not.
TEST_F(WritePacingTest, PartsAreHeldAgainstTheChunksBudget) {
  for (const uint32_t last : {50U, 51U}) {
    WritePacing pacing({0, 0, 0, 1, 100, 0}, 1000);
    pacing.StartTransfer();
    test::AdvanceClock(300);
    pacing.EndTransfer();
    pacing.StartTransfer();
    test::AdvanceClock(150);
    EXPECT_TRUE(pacing.EndPartialTransfer(100));
    pacing.StartTransfer();
    test::AdvanceClock(last);
    EXPECT_EQ(last == 50, pacing.EndPartialTransfer(100));
  }
}

}  // namespace
}  // namespace vexo
