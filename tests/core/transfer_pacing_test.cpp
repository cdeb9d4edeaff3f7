#include "port/transfer_pacing.h"

#include "core/core_test.h"

namespace vexo::test {
namespace {

using Sleeps = std::vector<uint32_t>;
using Attempts = std::vector<std::pair<uint32_t, uint32_t>>;  // Duration in ms, bytes.

// Timeouts with a read budget of `budget` ms and a read interval of 20 ms.
VexoPortTimeouts ReadLimits(uint32_t budget) { return {20, 0, budget, 0, 0, 0}; }

// Starts shortly before the tick count wraps, so that every measurement crosses the wrap.
class Pacing : public ::testing::Test {
 protected:
  void SetUp() override { SetClock(0xFFFFFFFF); }
};

TEST_F(Pacing, BudgetGrowsWithTheLengthAndIsNeverInfinite) {
  EXPECT_EQ(2050U, TransferBudget(5, 10, 2000));
  EXPECT_EQ(0U, TransferBudget(0, 10, 0));
  for (const auto& [multiplier, length] : {std::pair(0xFFFFFFFF, 0xFFFFFFFF), {0U, 1U}}) {
    EXPECT_EQ(0xFFFFFFFEU, TransferBudget(multiplier, length, 0xFFFFFFFF));
  }
  EXPECT_EQ(0xFFFFFFFEU, TransferBudget(0x10000, 0x10000, 0));
  ReadPacing pacing({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, 0, 0}, 10);
  EXPECT_EQ(0xFFFFFFFEU, pacing.wait());
  EXPECT_TRUE(pacing.EndAttempt(1));
  EXPECT_EQ(0xFFFFFFFEU, pacing.wait());
}

// `goes_on`: another attempt follows the last one, with a limit of `wait` ms.
TEST_F(Pacing, ReadContinuesWithinItsBudget) {
  static const struct {
    uint32_t budget;
    Attempts attempts;
    bool goes_on;
    uint32_t wait;
    Sleeps sleeps;  // After attempts without data, not once data has arrived.
  } kRows[] = {
      {100, {{90, 0}}, true, 10, {2}},  // No attempt with less than 10 ms left.
      {100, {{91, 0}}, false, 0, {}},
      {100, {{100, 1}}, true, 20, {}},  // The first data may use the whole budget.
      {100, {{101, 1}}, false, 0, {}},
      {1000, {{500, 1}, {20, 1}}, true, 20, {}},  // Each further piece has the read interval.
      {1000, {{500, 1}, {21, 1}}, false, 0, {}},
      {1000, {{0, 1}, {10, 0}}, true, 20, {}},
      {1000, {{0, 1}, {10, 0}, {11, 0}}, false, 0, {}},
      {1000, {{0, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 1}}, false, 20, {}},  // At most five attempts.
      {2000, {{100, 0}, {99, 0}}, true, 1801, {100}},
      {60, {{0, 0}, {0, 0}, {0, 0}, {0, 0}}, true, 15, {15, 15, 15, 15}},          // A share of the remaining time,
      {2000, {{0, 0}, {0, 0}, {0, 0}, {0, 0}}, true, 1700, {100, 100, 100, 100}},  // at most 100 ms.
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    SetUp();
    ReadPacing pacing(ReadLimits(row.budget), 10);
    bool goes_on = true;
    for (const auto& [milliseconds, bytes] : row.attempts) {
      EXPECT_TRUE(goes_on && pacing.StartAttempt());
      AdvanceClock(milliseconds);
      goes_on = pacing.EndAttempt(bytes);
      if (goes_on) {
        pacing.Pause();
      }
    }
    EXPECT_EQ(row.goes_on, goes_on && pacing.StartAttempt());
    EXPECT_TRUE(!row.goes_on || row.wait == pacing.wait()) << pacing.wait();
    EXPECT_EQ(row.sleeps, RecordedSleeps());
  }
}

// A chunk of 100 bytes has 200 ms, the whole call 1100 ms. Partial transfers count against the chunk's budget, even
// from earlier chunks; transfers of whole chunks do not.
TEST_F(Pacing, PartialTransfersCountAgainstTheChunkBudget) {
  for (const uint32_t last : {50U, 51U}) {
    WritePacing pacing({0, 0, 0, 1, 100, 0}, 1000);
    pacing.StartTransfer();
    AdvanceClock(300);
    pacing.EndTransfer();
    EXPECT_EQ(800U, pacing.StartTransfer()) << "remaining time of the call";
    AdvanceClock(150);
    EXPECT_TRUE(pacing.EndPartialTransfer(100));
    pacing.StartTransfer();
    AdvanceClock(last);
    EXPECT_EQ(last == 50, pacing.EndPartialTransfer(100));
  }
}

}  // namespace
}  // namespace vexo::test
