// Device file ports before they are open, after they are closed, and what they say of themselves.
#include <array>

#include "windows/file_port_fixture.h"

namespace vexo {
namespace {

using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::Write;
using test::Written;

class FilePortStateTest : public test::FilePortTest {
 protected:
  void ExpectNoTransfers(int32_t code) {
    EXPECT_EQ(port_->CheckOpen(port_), code);
    EXPECT_EQ(port_->Abort(port_), code);
    EXPECT_EQ(Write(port_, "ab"), Written(code, 0));
    EXPECT_EQ(Read(port_, 2), Reading(code, 0, ""));
    EXPECT_EQ(ReadAvailable(port_, 2), Reading(code, 0, ""));
  }
};

TEST_F(FilePortStateTest, OpensOnlyWhatIsConfiguredAndThere) {
  const std::string missing = "\\\\.\\pipe\\vexo_no_such_printer";
  Make(std::make_unique<test::PipePort>(missing));
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_SETTING);
  ExpectNoTransfers(VEXO_ERROR_IO_SETTING);

  ASSERT_EQ(port_->Configure(port_, test::kUsbUri), VEXO_OK);
  ExpectNoTransfers(VEXO_ERROR_IO_NOT_OPEN);
  EXPECT_EQ(port_->Open(port_), ERROR_FILE_NOT_FOUND);
  ExpectNoTransfers(VEXO_ERROR_IO_NOT_OPEN);
}

// The Aborts that were refused meanwhile have no effect later.
TEST_F(FilePortStateTest, ClosesAndOpensAgain) {
  OpenOnPipe<test::PipePort>();
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
  EXPECT_EQ(port_->CheckOpen(port_), VEXO_OK);
  EXPECT_EQ(Write(port_, "ab"), Written(VEXO_OK, 2));
  EXPECT_EQ(printer_->Receive(), "ab");

  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  ExpectNoTransfers(VEXO_ERROR_IO_NOT_OPEN);
  test::PrinterPipe next_line(test::PrinterPipe::kRoom, printer_->path());
  EXPECT_EQ(port_->Open(port_), VEXO_OK);
  EXPECT_EQ(Write(port_, "cd"), Written(VEXO_OK, 2));
  EXPECT_EQ(next_line.Receive(), "cd");
}

TEST_F(FilePortStateTest, NothingIsTransferredAtOnce) {
  OpenOnPipe<test::PipePort>();
  EXPECT_EQ(Write(port_, ""), Written(VEXO_OK, 0));
  EXPECT_EQ(Read(port_, 0), Reading(VEXO_OK, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 0), Reading(VEXO_OK, 0, ""));
  EXPECT_TRUE(test::Time().waits.empty());
}

TEST_F(FilePortStateTest, UriNeedsRoom) {
  const auto uri_in = [this](uint32_t size) {
    std::string buffer(300, '?');
    uint32_t length = test::kStaleCount;
    EXPECT_EQ(port_->GetUri(port_, buffer.data(), size, &length), VEXO_OK);
    EXPECT_EQ(buffer.substr(size), std::string(300 - size, '?'));
    return std::pair(std::string(buffer.c_str()), length);
  };
  Make(std::make_unique<test::PipePort>("?"));
  EXPECT_EQ(uri_in(256), std::pair(std::string(), 0U));
  ASSERT_EQ(port_->Configure(port_, test::kUsbUri), VEXO_OK);
  EXPECT_EQ(uri_in(254), std::pair(std::string(), 24U));
  EXPECT_EQ(uri_in(255), std::pair(std::string(test::kUsbUri), 24U));
}

TEST_F(FilePortStateTest, TimeLimitsAreKept) {
  using Limits = std::array<uint32_t, 6>;
  const auto limits = [this] {
    VexoPortTimeouts kept = {};
    EXPECT_EQ(port_->GetTimeouts(port_, &kept), VEXO_OK);
    return Limits{kept.readInterval,    kept.readMultiplier, kept.readConstant,
                  kept.writeMultiplier, kept.writeConstant,  kept.connect};
  };
  Make(std::make_unique<test::PipePort>("?"));
  EXPECT_EQ(limits(), (Limits{10, 5, 2000, 10, 2000, 1000}));
  EXPECT_EQ(port_->SetTimeouts(port_, {1, 2, 3, 4, 5, 6}), VEXO_OK);
  EXPECT_EQ(limits(), (Limits{1, 2, 3, 4, 5, 6}));
}

}  // namespace
}  // namespace vexo
