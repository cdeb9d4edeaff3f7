// What USB printer ports have of their own: whole packets, and a switch for reading.
#include "windows/file_port_fixture.h"

namespace vexo {
namespace {

using test::Pattern;
using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::UsbPipePort;
using test::Write;
using test::Written;

using UsbPortTest = test::FilePortTest;

struct PacketCase {
  const char* scenario;
  uint32_t length;
  std::vector<std::string> packets;
  Reading expected;
};

TEST_F(UsbPortTest, ReadTakesWholePackets) {
  const std::string packet = Pattern(64, 100);
  const std::string large = Pattern(300, 100);
  const PacketCase kCases[] = {
      {"the last bytes of a packet count", 10, {packet}, {VEXO_OK, 64, packet.substr(54)}},
      {"so do those of the packet that completes the answer", 10, {"abcd", packet}, {VEXO_OK, 68, packet.substr(54)}},
      {"a short answer is handed over", 10, {"abcd", "efg"}, {VEXO_ERROR_IO_READ_TIMEOUT, 7, "abcdefg"}},
      {"a packet is up to 255 bytes", 10, {large}, {VEXO_OK, 255, large.substr(245, 10)}},
      {"254 bytes are read as packets", 254, {"abcd", large}, {VEXO_OK, 259, large.substr(1, 254)}},
      {"255 bytes are read as asked", 255, {"abcd", large}, {VEXO_OK, 255, "abcd" + large.substr(0, 251)}},
  };
  for (const PacketCase& test : kCases) {
    SCOPED_TRACE(test.scenario);
    OpenOnPipe<UsbPipePort>();
    for (const std::string& part : test.packets) {
      SendLater(5, part);
    }
    EXPECT_EQ(Read(port_, test.length), test.expected);
  }
}

TEST_F(UsbPortTest, ReadAvailableTakesOnePacket) {
  const std::string large = Pattern(100, 100);
  const PacketCase kCases[] = {
      {"the last bytes of a packet count", 63, {large}, {VEXO_OK, 64, large.substr(1, 63)}},
      {"64 bytes are read as asked", 64, {large}, {VEXO_OK, 64, large.substr(0, 64)}},
      {"more bytes are read as asked", 80, {large}, {VEXO_OK, 80, large.substr(0, 80)}},
      {"a short packet is handed over", 10, {"abcd"}, {VEXO_OK, 4, "abcd"}},
      {"nothing", 10, {}, {VEXO_OK, 0, ""}},
  };
  for (const PacketCase& test : kCases) {
    SCOPED_TRACE(test.scenario);
    OpenOnPipe<UsbPipePort>();
    for (const std::string& part : test.packets) {
      printer_->Send(part);
    }
    EXPECT_EQ(ReadAvailable(port_, test.length), test.expected);
  }
}

class UsbControlTest : public UsbPortTest {
 protected:
  int32_t Set(int32_t code, uint8_t value) {
    return port_->Control(port_, code, nullptr, &value, 1, nullptr, 0, nullptr);
  }

  void ExpectGet(int32_t code, uint8_t expected) {
    uint8_t output = 0xEE;
    uint32_t returned = test::kStaleCount;
    EXPECT_EQ(port_->Control(port_, code, nullptr, nullptr, 0, &output, 1, &returned), VEXO_OK);
    EXPECT_EQ(output, expected);
    EXPECT_EQ(returned, 1U);
  }
};

TEST_F(UsbControlTest, GatedPrinterIsReadOnlyWhileReadsAreSwitchedOn) {
  OpenOnPipe<UsbPipePort>(test::PrinterPipe::kRoom, /*gated=*/true);
  ExpectGet(VEXO_CONTROL_USB_GET_READ_GATED, 1);
  ExpectGet(VEXO_CONTROL_USB_GET_READ_ENABLED, 1);
  printer_->Send("ab");
  EXPECT_EQ(Read(port_, 2), Reading(VEXO_OK, 2, "ab"));

  EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 0), VEXO_OK);
  ExpectGet(VEXO_CONTROL_USB_GET_READ_ENABLED, 0);
  printer_->Send("cd");
  EXPECT_EQ(Read(port_, 2), Reading(VEXO_ERROR_NOT_IMPLEMENTED, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 2), Reading(VEXO_ERROR_NOT_IMPLEMENTED, 0, ""));
  EXPECT_EQ(Write(port_, "ef"), Written(VEXO_OK, 2));

  EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 1), VEXO_OK);
  EXPECT_EQ(Read(port_, 2), Reading(VEXO_OK, 2, "cd"));
}

TEST_F(UsbControlTest, OtherPrintersAreReadWhateverTheSwitchSays) {
  OpenOnPipe<UsbPipePort>();
  ExpectGet(VEXO_CONTROL_USB_GET_READ_GATED, 0);
  EXPECT_EQ(Set(VEXO_CONTROL_USB_SET_READ_ENABLED, 0), VEXO_OK);
  printer_->Send("ab");
  EXPECT_EQ(Read(port_, 2), Reading(VEXO_OK, 2, "ab"));
}

TEST_F(UsbControlTest, MissingPlacesAndUnknownCodes) {
  OpenOnPipe<UsbPipePort>();
  uint8_t byte = 0;
  uint32_t returned = test::kStaleCount;
  const auto control = [&](int32_t code, const uint8_t* input, uint32_t in, uint8_t* output, uint32_t out) {
    return port_->Control(port_, code, nullptr, input, in, output, out, &returned);
  };
  EXPECT_EQ(control(VEXO_CONTROL_USB_SET_READ_ENABLED, nullptr, 1, &byte, 1), -1);
  EXPECT_EQ(control(VEXO_CONTROL_USB_SET_READ_ENABLED, &byte, 0, &byte, 1), -1);
  for (const int32_t code : {VEXO_CONTROL_USB_GET_READ_GATED, VEXO_CONTROL_USB_GET_READ_ENABLED}) {
    EXPECT_EQ(control(code, &byte, 1, nullptr, 1), -2);
    EXPECT_EQ(control(code, &byte, 1, &byte, 0), -2);
  }
  for (const int32_t code : {-1, 0, 1, 2, 3, 4, 8}) {
    EXPECT_EQ(control(code, &byte, 1, &byte, 1), VEXO_ERROR_NOT_IMPLEMENTED) << code;
  }
  EXPECT_EQ(returned, 0U);
}

}  // namespace
}  // namespace vexo
