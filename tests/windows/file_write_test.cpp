// How a Write on a device file is cut into pieces and limited in time.
#include "windows/file_port_fixture.h"

namespace vexo {
namespace {

using test::Milliseconds;
using test::Pattern;
using test::PipePort;
using test::Read;
using test::Reading;
using test::Time;
using test::Write;
using test::Written;

// A printer that takes nothing on its own.
constexpr DWORD kNoRoom = 1;

class FileWriteTest : public test::FilePortTest {
 protected:
  // The printer takes one piece during the next wait of the port.
  void TakeLater(uint32_t after_ms, std::string* taken, bool too_late = false) {
    Time().happenings.push_back({after_ms, [=] { *taken += printer_->Receive(); }, too_late});
  }
};

TEST_F(FileWriteTest, LongDataGoesInPieces) {
  OpenOnPipe<PipePort>();
  const std::string data = Pattern(10'000);
  EXPECT_EQ(Write(port_, data), Written(VEXO_OK, 10'000));
  EXPECT_EQ(printer_->Receive(), data.substr(0, 4096));
  EXPECT_EQ(printer_->Receive(), data.substr(4096, 4096));
  EXPECT_EQ(printer_->Receive(), data.substr(8192));
  EXPECT_EQ(Time().waits, Milliseconds());
}

TEST_F(FileWriteTest, BudgetIsThatOfTheWholeCall) {
  OpenOnPipe<PipePort>(kNoRoom);
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 0));
  EXPECT_EQ(Time().waits, Milliseconds({10 * 5000 + 2000}));

  OpenOnPipe<PipePort>(kNoRoom);
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 5, 2000, 3, 7, 1000}), VEXO_OK);
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 0));
  EXPECT_EQ(Time().waits, Milliseconds({3 * 5000 + 7}));
}

TEST_F(FileWriteTest, PiecesShareTheBudgetAndTheLastIsCancelled) {
  OpenOnPipe<PipePort>(kNoRoom);
  const std::string data = Pattern(12'288);
  std::string taken;
  TakeLater(100'000, &taken);
  TakeLater(20'000, &taken);
  EXPECT_EQ(Write(port_, data), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 8192));
  EXPECT_EQ(Time().waits, Milliseconds({124'880, 24'880, 4'880}));
  EXPECT_EQ(taken, data.substr(0, 8192));
  EXPECT_EQ(printer_->Receive(), "") << "the cancelled piece";
}

TEST_F(FileWriteTest, PieceTakenWithTheEndOfTheWaitCounts) {
  OpenOnPipe<PipePort>(kNoRoom);
  std::string taken;
  TakeLater(52'000, &taken, /*too_late=*/true);
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 4096));
}

TEST_F(FileWriteTest, AbortStopsBeforeTheNextPiece) {
  OpenOnPipe<PipePort>(kNoRoom);
  Time().happenings.push_back({1, [this] {
                                 EXPECT_EQ(port_->Abort(port_), VEXO_OK);
                                 printer_->Receive();
                               }});
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_OK, 4096));
  EXPECT_EQ(Write(port_, "more"), Written(VEXO_OK, 0));
  EXPECT_EQ(printer_->Receive(), "");
}

TEST_F(FileWriteTest, SystemErrorsArePassedOnWithTheCountSoFar) {
  OpenOnPipe<PipePort>(kNoRoom);
  std::string taken;
  TakeLater(1, &taken);
  Time().happenings.push_back({1, [this] { printer_->Unplug(); }});
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(ERROR_BROKEN_PIPE, 4096));
  EXPECT_EQ(Write(port_, "more"), Written(ERROR_NO_DATA, 0));
}

}  // namespace
}  // namespace vexo
