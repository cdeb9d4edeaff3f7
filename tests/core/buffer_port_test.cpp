// The buffer port, used through its port object.
#include "core/core_test.h"
#include "port/port_factory.h"
#include "port/port_object.h"
#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

class BufferPortTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, OpenPort(&port_, "BUF"));
    ASSERT_EQ(0, port_->Open(port_));
  }
  void TearDown() override { EXPECT_EQ(0, ClosePort(port_)); }

  int32_t Write(const std::string& text, uint32_t failing_allocation = 0) {
    uint32_t written = 99;
    AllocationFault fault(failing_allocation);
    const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
    const int32_t result = port_->Write(port_, bytes, 0, static_cast<uint32_t>(text.size()), &written);
    EXPECT_EQ(result == 0 ? text.size() : 0, written);
    return result;
  }

  std::string Content() {
    Bytes room(100'000);
    uint32_t read = 0;
    EXPECT_EQ(0, port_->Read(port_, room.data(), 0, static_cast<uint32_t>(room.size()), &read));
    return {room.begin(), room.begin() + read};
  }

  VexoPort* port_ = nullptr;
};

TEST_F(BufferPortTest, ReadKeepsTheContentAndCheckOpenAndOpenClearIt) {
  Write("first ");
  Write("second");
  EXPECT_EQ("first second", Content());
  EXPECT_EQ(0, port_->Write(port_, BytesOf("0123456789").data(), 3, 4, nullptr));
  EXPECT_EQ("first second3456", Content());
  EXPECT_EQ(0, port_->CheckOpen(port_));
  EXPECT_EQ("", Content());
  Write("new");
  EXPECT_EQ(0, port_->Abort(port_));
  EXPECT_EQ("new", Content());
  EXPECT_EQ(0, port_->Open(port_));
  EXPECT_EQ("", Content());
}

TEST_F(BufferPortTest, CapacityGrowsByHalfOrToTheSizeNeeded) {
  const std::tuple<size_t, uint32_t, int32_t> rows[] = {
      {2048, 1, 0},                              // The initial capacity.
      {1, 1, -9},   {1, 0, 0},                   // Grows to 3072.
      {1023, 1, 0}, {1, 1, -9}, {10'000, 0, 0},  // More than half again: grows to the exact size.
      {1, 1, -9}};
  std::string content;
  for (const auto& [count, failing_allocation, result] : rows) {
    EXPECT_EQ(result, Write(std::string(count, '-'), failing_allocation)) << count;
    content.append(result == 0 ? count : 0, '-');
    EXPECT_EQ(content, Content());
  }
  uint32_t written = 99;
  EXPECT_EQ(-9, port_->Write(port_, BytesOf("x").data(), 0, 0xFFFFFFFF, &written)) << "the total size exceeds 32 bits";
  EXPECT_EQ(0U, written);
  EXPECT_EQ(0, port_->Close(port_));
  EXPECT_EQ("", Content());
  EXPECT_EQ(0, Write("written without another Open"));
  EXPECT_EQ("written without another Open", Content());
  AllocationFault fault(1);
  EXPECT_EQ(-9, port_->Open(port_));
}

TEST_F(BufferPortTest, TimeoutsAreZeroAndControlDoesNothing) {
  VexoPortTimeouts timeouts = {1, 2, 3, 4, 5, 6};
  EXPECT_EQ(0, port_->SetTimeouts(port_, timeouts));
  EXPECT_EQ(0, port_->GetTimeouts(port_, &timeouts));
  EXPECT_EQ(0U, timeouts.readInterval + timeouts.readConstant + timeouts.writeConstant + timeouts.connect);
  uint32_t returned = 0;
  EXPECT_EQ(0, port_->Control(port_, 1, nullptr, nullptr, 0, nullptr, 0, &returned));
}

TEST_F(BufferPortTest, BufferSizeIsTheFourthMinusTheThirdArgument) {
  const std::tuple<uint32_t, uint32_t, int32_t> kRows[] = {{0, 5, 0},  {0, 4, -2}, {3, 8, 0}, {3, 7, -2},
                                                           {8, 3, -2}, {0, 0, -2}, {3, 16, 0}};
  const auto expect_read = [this](const std::string& text, int32_t code, uint32_t third, uint32_t fourth) {
    for (const auto reader : {&VexoPort::Read, &VexoPort::ReadAvailable}) {
      SCOPED_TRACE(text + " " + std::to_string(third) + ", " + std::to_string(fourth));
      std::string buffer(16, '#');
      uint32_t read = 99;
      EXPECT_EQ(code, (port_->*reader)(port_, reinterpret_cast<uint8_t*>(buffer.data()), third, fourth, &read));
      EXPECT_EQ(text.size(), read);
      EXPECT_EQ(std::string(16, '#').replace(third, text.size(), text), buffer);
    }
  };
  expect_read("", 0, 0, 0);
  Write("12345");
  for (const auto& [third, fourth, code] : kRows) {
    expect_read(code == 0 ? "12345" : "", code, third, fourth);
  }
}

}  // namespace
}  // namespace vexo::test
