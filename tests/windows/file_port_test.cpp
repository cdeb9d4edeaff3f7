// Ports on device files: opening, time limits of transfers and errors.
#include <optional>

#include "windows/file_port_fixture.h"

namespace vexo::test {
namespace {

class FilePortTest : public FilePortFixture {
 protected:
  void ExpectNoTransfers(int32_t code) {
    EXPECT_EQ(port_->CheckOpen(port_), code);
    EXPECT_EQ(port_->Abort(port_), code);
    EXPECT_EQ(Write(port_, "ab"), Written(code, 0));
    EXPECT_EQ(Read(port_, 2), Reading(code, 0, ""));
    EXPECT_EQ(ReadAvailable(port_, 2), Reading(code, 0, ""));
  }
};

// A refused Abort must not affect later transfers.
TEST_F(FilePortTest, OpensAndClosesRepeatedlyAndOnlyWhenConfigured) {
  Make(std::make_unique<UsbPipePort>("\\\\.\\pipe\\vexo_no_such_printer"));
  ExpectTimeouts(port_, {10, 5, 2000, 10, 2000, 1000});
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_SETTING);
  ExpectNoTransfers(VEXO_ERROR_IO_SETTING);
  ASSERT_EQ(port_->Configure(port_, "vexo:/dev/bus/USB/DEVICE"), VEXO_OK);
  EXPECT_EQ(port_->Open(port_), ERROR_FILE_NOT_FOUND);
  ExpectNoTransfers(VEXO_ERROR_IO_NOT_OPEN);

  OpenOnPipe();
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
  EXPECT_EQ(port_->CheckOpen(port_), VEXO_OK);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  ExpectNoTransfers(VEXO_ERROR_IO_NOT_OPEN);
  PrinterPipe next_line(PrinterPipe::kRoom, printer_->path());
  EXPECT_EQ(port_->Open(port_), VEXO_OK);
  EXPECT_EQ(Write(port_, "cd"), Written(VEXO_OK, 2));
  EXPECT_EQ(next_line.Receive(), "cd");
}

struct Arrival {
  uint32_t after_ms;
  const char* packet;
  bool too_late = false;
};

// Some devices complete reads at once without data until the printer answers. Threads may wake late, so data may arrive
// after the wait's limit.
TEST_F(FilePortTest, ReadTimeLimits) {
  constexpr std::nullopt_t kDefault = std::nullopt;  // 2000 ms and 5 ms a byte; read interval 10 ms.
  const Arrival kEmpty = {0, ""};
  constexpr int32_t kTimeout = VEXO_ERROR_IO_READ_TIMEOUT;
  const struct {
    const char* scenario;
    std::optional<VexoPortTimeouts> timeouts;
    std::vector<Arrival> arrivals;
    uint32_t length;
    Reading expected;
    Milliseconds waits;
    Milliseconds sleeps = {};
  } kCases[] = {
      {"the default budget", kDefault, {}, 20, {kTimeout, 0, ""}, {2100}},
      {"several packets", kDefault, {{1500, "abcd"}, {10, "efghij"}}, 10, {VEXO_OK, 10, "abcdefghij"}, {2050, 10}},
      {"a share of the budget after an empty answer",
       VexoPortTimeouts{10, 0, 40, 10, 2000, 1000},
       {kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty},
       4,
       {kTimeout, 0, ""},
       {40, 40, 30, 20, 10},
       {10, 10, 10, 10}},
      {"data that arrives at the end of the wait", kDefault, {{2020, "abcd", true}}, 4, {VEXO_OK, 4, "abcd"}, {2020}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.scenario);
    OpenOnPipe();
    if (test.timeouts) {
      ASSERT_EQ(port_->SetTimeouts(port_, *test.timeouts), VEXO_OK);
    }
    for (const Arrival& arrival : test.arrivals) {
      SendLater(arrival.after_ms, arrival.packet, arrival.too_late);
    }
    EXPECT_EQ(Read(port_, test.length), test.expected);
    EXPECT_EQ(Time().waits, test.waits);
    EXPECT_EQ(Time().sleeps, test.sleeps);
  }
}

TEST_F(FilePortTest, ReadAvailableWaitsOnce) {
  OpenOnPipe();
  EXPECT_EQ(ReadAvailable(port_, 100), Reading(VEXO_OK, 0, ""));
  SendLater(100, Pattern(200), /*too_late=*/true);
  EXPECT_EQ(ReadAvailable(port_, 150), Reading(VEXO_OK, 150, Pattern(150)));
  EXPECT_EQ(ReadAvailable(port_, 150), Reading(VEXO_OK, 50, Pattern(50, 150)));
  EXPECT_EQ(Time().waits, Milliseconds({100, 100}));
  EXPECT_EQ(ReadWith(&VexoPort::ReadAvailable, port_, 10, kOffset - 1), Reading(VEXO_ERROR_PARAMETER, 0, ""));
}

TEST_F(FilePortTest, ChunksShareTheWriteBudgetAndTheLastIsCancelled) {
  OpenOnPipe();
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_OK, 5000));
  EXPECT_TRUE(printer_->Receive() == Pattern(4096));
  EXPECT_TRUE(printer_->Receive() == Pattern(904, 4096));
  EXPECT_EQ(Time().waits, Milliseconds());

  OpenOnPipe(PrinterPipe::kNoRoom);
  const std::string data = Pattern(12'288);
  ReceiveLater(100'000);
  ReceiveLater(20'000);
  EXPECT_EQ(Write(port_, data), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 8192));
  EXPECT_EQ(Time().waits, Milliseconds({10 * 12'288 + 2000, 24'880, 4'880}));
  EXPECT_EQ(received_, data.substr(0, 8192));
  EXPECT_EQ(printer_->Receive(), "") << "the cancelled chunk";

  OpenOnPipe(PrinterPipe::kNoRoom);
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 5, 2000, 3, 7, 1000}), VEXO_OK);
  ReceiveLater(3 * 5000 + 7, /*too_late=*/true);
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_ERROR_IO_WRITE_TIMEOUT, 4096))
      << "completed at the end of the wait";
  EXPECT_EQ(Time().waits, Milliseconds({3 * 5000 + 7}));
}

TEST_F(FilePortTest, AbortStopsBeforeTheNextChunk) {
  OpenOnPipe(PrinterPipe::kNoRoom);
  const auto abort_later = [this](const char* answer) {
    Time().wait_events.push_back({1, [=] {
                                    EXPECT_EQ(port_->Abort(port_), VEXO_OK);
                                    printer_->Receive();
                                    printer_->Send(answer);
                                  }});
  };
  abort_later("");
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(VEXO_OK, 4096));
  EXPECT_EQ(Write(port_, "more"), Written(VEXO_OK, 0));
  EXPECT_EQ(printer_->Receive(), "");

  OpenOnPipe();
  abort_later("ab");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 2, "ab"));
  printer_->Send("cd");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 0, ""));
}

TEST_F(FilePortTest, SystemErrorsAreReturnedWithThePartialCount) {
  OpenOnPipe();
  SendLater(1, "ab");
  UnplugLater();
  EXPECT_EQ(Read(port_, 10), Reading(ERROR_BROKEN_PIPE, 2, "ab"));
  EXPECT_EQ(ReadAvailable(port_, 10), Reading(ERROR_BROKEN_PIPE, 0, ""));

  OpenOnPipe(PrinterPipe::kNoRoom);
  ReceiveLater(1);
  UnplugLater();
  EXPECT_EQ(Write(port_, Pattern(5000)), Written(ERROR_BROKEN_PIPE, 4096));
  EXPECT_EQ(Write(port_, "more"), Written(ERROR_NO_DATA, 0));
}

}  // namespace
}  // namespace vexo::test
