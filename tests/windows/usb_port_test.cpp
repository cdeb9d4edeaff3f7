// Features specific to USB printer ports: reads of whole packets and the switch that enables reading.
#include "windows/file_port_fixture.h"

namespace vexo::test {
namespace {

class UsbPortTest : public FilePortFixture {
 protected:
  int32_t Set(int32_t code, uint8_t value, uint32_t length = 1) {
    return port_->Control(port_, code, nullptr, &value, length, nullptr, 0, nullptr);
  }

  // The value, or a negative error code.
  int Get(int32_t code, uint32_t length = 1) {
    uint8_t output = 0xEE;
    uint32_t returned = kStaleCount;
    const int32_t result = port_->Control(port_, code, nullptr, nullptr, 0, &output, length, &returned);
    EXPECT_EQ(returned, result == VEXO_OK ? 1U : 0U);
    return result == VEXO_OK ? output : result;
  }
};

TEST_F(UsbPortTest, ReadsUseWholePackets) {
  const std::string packet = Pattern(64, 100);
  const std::string large = Pattern(300, 100);
  const struct {
    const char* scenario;
    decltype(&Read) read;
    uint32_t length;
    std::vector<std::string> packets;
    Reading expected;
  } kCases[] = {
      {"the last bytes of a packet count", Read, 10, {packet}, {VEXO_OK, 64, packet.substr(54)}},
      {"those of the next one, too", Read, 10, {"abcd", packet}, {VEXO_OK, 68, packet.substr(54)}},
      {"a short answer is handed over", Read, 10, {"abcd", "efg"}, {VEXO_ERROR_IO_READ_TIMEOUT, 7, "abcdefg"}},
      {"254 bytes are read as packets", Read, 254, {"abcd", large}, {VEXO_OK, 259, large.substr(1, 254)}},
      {"255 bytes are read as asked", Read, 255, {"abcd", large}, {VEXO_OK, 255, "abcd" + large.substr(0, 251)}},
      {"available: the last bytes", ReadAvailable, 63, {large}, {VEXO_OK, 64, large.substr(1, 63)}},
      {"available: 64 bytes as asked", ReadAvailable, 64, {large}, {VEXO_OK, 64, large.substr(0, 64)}},
      {"available: a short packet", ReadAvailable, 10, {"abcd", "efg"}, {VEXO_OK, 4, "abcd"}},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.scenario);
    OpenOnPipe();
    for (const std::string& part : test.packets) {
      SendLater(5, part);
    }
    EXPECT_EQ(test.read(port_, test.length), test.expected);
  }
}

TEST_F(UsbPortTest, SwitchAffectsOnlyGatedPrinters) {
  for (const bool gated : {false, true}) {
    SCOPED_TRACE(gated);
    OpenOnPipe(PrinterPipe::kRoom, gated);
    EXPECT_EQ(Get(VEXO_CONTROL_USB_GET_READ_GATED), gated ? 1 : 0);
    EXPECT_EQ(Get(VEXO_CONTROL_USB_GET_READ_ENABLED), 1);
    EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 0), VEXO_OK);
    EXPECT_EQ(Get(VEXO_CONTROL_USB_GET_READ_ENABLED), 0);
    EXPECT_EQ(Write(port_, "ef"), Written(VEXO_OK, 2));
    printer_->Send("cd");
    if (gated) {
      EXPECT_EQ(Read(port_, 2), Reading(VEXO_ERROR_NOT_IMPLEMENTED, 0, ""));
      EXPECT_EQ(ReadAvailable(port_, 2), Reading(VEXO_ERROR_NOT_IMPLEMENTED, 0, ""));
      EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 1), VEXO_OK);
    }
    EXPECT_EQ(Read(port_, 2), Reading(VEXO_OK, 2, "cd"));
  }
}

TEST_F(UsbPortTest, ControlNeedsABufferAndAKnownCode) {
  OpenOnPipe();
  EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 0, /*length=*/0), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(Get(VEXO_CONTROL_USB_GET_READ_ENABLED, /*length=*/0), VEXO_ERROR_BUFFER_TOO_SMALL);
  for (const int32_t code : {-1, 0, 1, 2, 3, 4, 8}) {
    EXPECT_EQ(Get(code), VEXO_ERROR_NOT_IMPLEMENTED) << code;
  }
}

}  // namespace
}  // namespace vexo::test
