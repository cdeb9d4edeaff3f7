#include "port/port_object.h"

#include <cstring>

#include "core/driver_test.h"
#include "port/port_factory.h"

namespace vexo::test {
namespace {

class PortObject : public DriverTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, OpenPort(&port_, "NET,10.0.0.5"));
    entries_ = *port_;
  }
  void TearDown() override { ClosePort(port_); }

  // All twelve operations on `port` fail with `code`. Transfers and Control also report a count of 0.
  void ExpectEveryOperationGives(int32_t code, VexoPort* port) const {
    uint8_t byte = 0;
    VexoPortTimeouts timeouts = {};
    std::vector<uint32_t> counts(4, 77);
    const std::vector<int32_t> results = {
        entries_.Configure(port, "vexo:/dev/bus/NET/D?ip=1"),
        entries_.GetUri(port, nullptr, 0, nullptr),
        entries_.Open(port),
        entries_.Close(port),
        entries_.Abort(port),
        entries_.CheckOpen(port),
        entries_.SetTimeouts(port, timeouts),
        entries_.GetTimeouts(port, &timeouts),
        entries_.Write(port, &byte, 0, 1, &counts[0]),
        entries_.Read(port, &byte, 0, 1, &counts[1]),
        entries_.ReadAvailable(port, &byte, 0, 1, &counts[2]),
        entries_.Control(port, 5, nullptr, nullptr, 0, nullptr, 0, &counts[3]),
    };
    EXPECT_EQ(std::vector<int32_t>(12, code), results);
    EXPECT_EQ(std::vector<uint32_t>(4, 0), counts);
  }

  VexoPort* port_ = nullptr;
  VexoPort entries_ = {};  // The record as it was created.
};

TEST_F(PortObject, NullOrWrongMagicIsRefusedByEveryOperation) {
  ExpectEveryOperationGives(-6, nullptr);
  EXPECT_EQ(-6, ClosePort(nullptr));
  VexoPort other = entries_;
  other.magic = VEXO_PRINTER_MAGIC;
  ExpectEveryOperationGives(-6, &other);
  EXPECT_EQ(-6, ClosePort(&other));
}

// A stale record or its copy must not reach a newer port in the same memory.
TEST_F(PortObject, StaleRecordsAreRefused) {
  VexoPort* const closed = port_;
  VexoPort copy = *port_;
  EXPECT_EQ(0, ClosePort(port_));
  for (int i = 0; i < 20; ++i) {
    ExpectEveryOperationGives(-6, closed);
    EXPECT_EQ(-6, ClosePort(closed));
    ExpectEveryOperationGives(-308, &copy);
    ASSERT_EQ(0, OpenPort(&port_, "NET,10.0.0.5"));
    EXPECT_EQ(0, ClosePort(port_));
  }
}

TEST_F(PortObject, CopyReachesTheSameDevice) {
  VexoPort copy = *port_;
  EXPECT_EQ(0, copy.Open(&copy));
  EXPECT_EQ(0, port_->CheckOpen(port_));
  const VexoPortTimeouts set = {11, 12, 13, 14, 15, 16};
  VexoPortTimeouts got = {};
  EXPECT_EQ(0, copy.SetTimeouts(&copy, set));
  EXPECT_EQ(0, port_->GetTimeouts(port_, &got));
  EXPECT_EQ(0, std::memcmp(&set, &got, sizeof(set)));

  EXPECT_EQ(0, ClosePort(&copy));  // Closes the device only; the original object stays valid.
  EXPECT_EQ(-309, port_->CheckOpen(port_));
  EXPECT_EQ(0, port_->Open(port_));
}

TEST_F(PortObject, NullArguments) {
  EXPECT_EQ(0, port_->Open(port_));
  uint32_t count = 77;
  EXPECT_EQ(-1, port_->Write(port_, nullptr, 0, 1, &count));
  EXPECT_EQ(-1, port_->Read(port_, nullptr, 0, 1, &count));
  EXPECT_EQ(-1, port_->ReadAvailable(port_, nullptr, 0, 1, &count));
  EXPECT_EQ(0, port_->Write(port_, nullptr, 0, 0, &count));
  EXPECT_EQ(0U, count);
  EXPECT_EQ(-1, port_->GetTimeouts(port_, nullptr));
  EXPECT_EQ(-301, port_->Configure(port_, nullptr));

  uint8_t byte = 0;  // The count is optional.
  EXPECT_EQ(0, port_->GetUri(port_, nullptr, 0, nullptr));
  EXPECT_EQ(0, port_->Write(port_, &byte, 0, 1, nullptr));
  EXPECT_EQ(-332, port_->Read(port_, &byte, 0, 1, nullptr));
  EXPECT_EQ(0, port_->ReadAvailable(port_, &byte, 0, 1, nullptr));
  EXPECT_EQ(-7, port_->Control(port_, 1, nullptr, nullptr, 0, nullptr, 0, nullptr));
}

TEST_F(PortObject, GetUriNeedsABufferOf255Bytes) {
  const std::string uri = "vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5+port=9100";
  for (const uint32_t size : {0U, 254U, 255U}) {
    std::string buffer(256, '#');
    uint32_t length = 0;
    EXPECT_EQ(0, port_->GetUri(port_, buffer.data(), size, &length));
    EXPECT_EQ(uri.size(), length);
    if (size == 255) {
      EXPECT_EQ(uri, buffer.c_str());
    } else {
      EXPECT_EQ(std::string(size, '\0') + std::string(256 - size, '#'), buffer);
    }
  }
}

// Simulates another thread that closes the port during a write. The device is closed at once; the driver is freed when
// the write has ended.
TEST_F(PortObject, CloseEndsARunningOperation) {
  const int32_t drivers = DriverCount();
  EXPECT_EQ(0, port_->Open(port_));
  SetDriverScript({0, 0, [&](const std::string& call) {
                     if (call == "NET Write 1") {
                       EXPECT_EQ(0, ClosePort(port_));
                       EXPECT_EQ(0, OpenDevices());
                       EXPECT_EQ(drivers, DriverCount());
                       EXPECT_EQ(1U, PortLockReferenceCount());
                     }
                   }});
  const uint8_t byte = 0;
  uint32_t written = 77;
  EXPECT_EQ(0, port_->Write(port_, &byte, 0, 1, &written));
  EXPECT_EQ(0U, written);
  EXPECT_EQ(0, OpenDevices());
  EXPECT_EQ(drivers - 1, DriverCount());
  EXPECT_EQ(0U, PortLockReferenceCount());
}

}  // namespace
}  // namespace vexo::test
