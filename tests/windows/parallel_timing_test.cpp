// How a parallel port paces its reads: byte by byte, with pauses while the printer says nothing.
#include <cstdio>

#include "port/parallel_port.h"
#include "windows/file_port_fixture.h"

namespace vexo {
namespace {

using test::Milliseconds;
using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::Time;
using test::Write;
using test::Written;

// The device is a file: at its end, reads bring nothing and return at once, like those of an idle reverse channel.
class ParallelTimingTest : public test::FilePortTest {
 protected:
  ~ParallelTimingTest() override {
    Release();
    std::remove(kDevice);
  }

  void OpenOnFile(const std::string& content, VexoPortTimeouts timeouts) {
    Release();
    std::FILE* const file = std::fopen(kDevice, "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite(content.data(), 1, content.size(), file);
    std::fclose(file);
    Open(kDevice, timeouts);
  }

  void Open(const std::string& device, VexoPortTimeouts timeouts) {
    Time() = {};
    Make(std::make_unique<ParallelPort>(), VEXO_PORT_PARALLEL);
    ASSERT_EQ(port_->Configure(port_, ("vexo:/dev/bus/LPT/" + device).c_str()), VEXO_OK);
    ASSERT_EQ(port_->SetTimeouts(port_, timeouts), VEXO_OK);
    ASSERT_EQ(port_->Open(port_), VEXO_OK);
  }

  static constexpr char kDevice[] = "parallel_timing_test.device";
};

TEST_F(ParallelTimingTest, SilenceEndsAfterTheBudget) {
  const struct {
    VexoPortTimeouts timeouts;
    Milliseconds sleeps;
  } kCases[] = {
      {{10, 0, 3, 10, 2000, 0}, {10}},
      {{10, 0, 30, 10, 2000, 0}, {30, 30}},
      {{10, 5, 10, 10, 2000, 0}, {30, 30}},
      {{10, 0, 499, 10, 2000, 0}, {100, 100, 100, 100, 100}},
  };
  for (const auto& [timeouts, sleeps] : kCases) {
    SCOPED_TRACE(timeouts.readConstant);
    OpenOnFile("", timeouts);
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().sleeps, sleeps);
  }
}

TEST_F(ParallelTimingTest, FivePausesAreTheMost) {
  OpenOnFile("", {10, 0, 2000, 10, 2000, 0});
  Time().tick_step = 1;
  const uint32_t started = Time().now;
  EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  EXPECT_EQ(Time().sleeps, Milliseconds(5, 100));
  EXPECT_GT(Time().now - started, 2000U);
}

TEST_F(ParallelTimingTest, SlowReadsArePauseEnough) {
  for (const auto& [call_ms, pauses] : {std::pair(99U, 2U), std::pair(100U, 0U)}) {
    SCOPED_TRACE(call_ms);
    OpenOnFile("", {10, 0, 600, 10, 2000, 0});
    Time().tick_step = call_ms;
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().sleeps, Milliseconds(pauses, 100));
  }
}

TEST_F(ParallelTimingTest, BytesThatCameAreHandedOver) {
  OpenOnFile("abcd", {10, 0, 50, 10, 2000, 0});
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_OK, 3, "abc"));
  EXPECT_EQ(Time().sleeps, Milliseconds());
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 1, "d"));
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_OK, 0, ""));
}

TEST_F(ParallelTimingTest, SystemErrorsArePassedOn) {
  test::PrinterPipe printer;
  Open(printer.path(), {10, 0, 50, 10, 2000, 0});
  printer.Send("ab");
  EXPECT_EQ(ReadAvailable(port_, 1), Reading(VEXO_OK, 1, "a"));
  EXPECT_EQ(Write(port_, "cd"), Written(VEXO_OK, 2));
  EXPECT_EQ(Read(port_, 1), Reading(VEXO_OK, 1, "b"));
  printer.Unplug();
  EXPECT_EQ(Read(port_, 2), Reading(ERROR_BROKEN_PIPE, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 2), Reading(ERROR_BROKEN_PIPE, 0, ""));
  EXPECT_EQ(Write(port_, "ef"), Written(ERROR_NO_DATA, 0));
}

}  // namespace
}  // namespace vexo
