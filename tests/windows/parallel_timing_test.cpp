// Pacing of reads on a parallel port: byte by byte, with sleeps while the printer sends nothing.
#include <cstdio>

#include "port/windows/parallel_port.h"
#include "windows/file_port_fixture.h"

namespace vexo::test {
namespace {

class ParallelTimingTest : public FilePortFixture {
 protected:
  void Open(const std::string& device, VexoPortTimeouts timeouts) {
    Make(std::make_unique<ParallelPort>(), VEXO_PORT_PARALLEL);
    ASSERT_EQ(port_->Configure(port_, ("vexo:/dev/bus/LPT/" + device).c_str()), VEXO_OK);
    ASSERT_EQ(port_->SetTimeouts(port_, timeouts), VEXO_OK);
    ASSERT_EQ(port_->Open(port_), VEXO_OK);
  }
};

// The device is a file. At its end, reads return at once without data, as on an idle reverse channel.
TEST_F(ParallelTimingTest, SilenceEndsAfterTheBudget) {
  const char kDevice[] = "parallel_timing_test.device";
  const struct {
    const char* scenario;
    uint32_t multiplier;
    uint32_t constant;
    uint32_t call_ms;  // Duration of a read.
    Milliseconds sleeps;
  } kCases[] = {
      {"shortest pause", 0, 3, 0, {10}},
      {"pauses of the budget's length", 5, 10, 0, {30, 30}},
      {"longest pause, and five at most", 0, 2000, 1, {100, 100, 100, 100, 100}},
      {"reads that are nearly pause enough", 0, 600, 99, {100, 100}},
      {"reads that are pause enough", 0, 600, 100, {}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.scenario);
    Release();
    std::FILE* const file = std::fopen(kDevice, "wb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    Open(kDevice, {10, test.multiplier, test.constant, 10, 2000, 0});
    Time().tick_step = test.call_ms;
    const uint32_t started = Time().now;
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
    EXPECT_EQ(Time().sleeps, test.sleeps);
    EXPECT_GT(Time().now - started, 4 * test.multiplier + test.constant);
  }
  Release();
  std::remove(kDevice);
}

TEST_F(ParallelTimingTest, DataAndSystemErrorsAreReturned) {
  PrinterPipe printer;
  Open(printer.path(), {10, 0, 50, 10, 2000, 0});
  printer.Send("ab");
  EXPECT_EQ(ReadAvailable(port_, 1), Reading(VEXO_OK, 1, "a"));
  EXPECT_EQ(Write(port_, "cd"), Written(VEXO_OK, 2));
  EXPECT_EQ(Read(port_, 1), Reading(VEXO_OK, 1, "b"));
  printer.Unplug();
  EXPECT_EQ(Read(port_, 2), Reading(ERROR_BROKEN_PIPE, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 2), Reading(ERROR_BROKEN_PIPE, 0, ""));
  EXPECT_EQ(Write(port_, "ef"), Written(ERROR_NO_DATA, 0));
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_OK, 0, ""));
}

}  // namespace
}  // namespace vexo::test
