// Serial line settings in device URIs.
#include "port/serial_settings.h"

#include "core/core_test.h"

namespace vexo {
namespace {

constexpr int kBadParity = 159;
constexpr int kBadByteSize = 158;
constexpr int kBadStopBits = 157;

int32_t Read(const std::string& parameters, SerialSettings* settings) {
  DeviceUri uri;
  EXPECT_EQ(VEXO_OK, ParseDeviceUri(&uri, ("vexo:/dev/bus/COM/COM3?" + parameters).c_str()));
  return ReadSerialSettings(uri, settings);
}

TEST(SerialSettingsTest, AcceptedAndRefusedTexts) {
  const std::string sound = "baudrate=9600+parity=N+bytesize=8+stopbits=1+flowcontrol=N";
  const std::tuple<const char*, const char*, int32_t, SerialSettings> rows[] = {
      {"9600", "9601", -351, {}},
      {"9600", " 9600", -351, {}},
      {"9600", "09600", -351, {}},
      {"baudrate", "Baudrate", -351, {}},
      {"parity=N", "parity=o", 0, {1, 8, 0, 9600, 0}},
      {"parity=N", "parity=E", 0, {2, 8, 0, 9600, 0}},
      {"parity=N", "parity=m", 0, {3, 8, 0, 9600, 0}},
      {"parity=N", "parity=S", 0, {4, 8, 0, 9600, 0}},
      {"parity=N", "parity=x", 0, {kBadParity, 8, 0, 9600, 0}},
      {"parity=N", "parity=None", 0, {kBadParity, 8, 0, 9600, 0}},
      {"parity=N", "other=N", 0, {kBadParity, 8, 0, 9600, 0}},
      {"size=8", "size=4", 0, {0, 4, 0, 9600, 0}},
      {"size=8", "size=007 bits", 0, {0, 7, 0, 9600, 0}},
      {"size=8", "size=3", 0, {0, kBadByteSize, 0, 9600, 0}},
      {"size=8", "size=9", 0, {0, kBadByteSize, 0, 9600, 0}},
      {"size=8", "size=x8", 0, {0, kBadByteSize, 0, 9600, 0}},
      {"size=8", "size=4294967304", 0, {0, kBadByteSize, 0, 9600, 0}},
      {"bits=1", "bits=1.5", 0, {0, 8, 1, 9600, 0}},
      {"bits=1", "bits=2", 0, {0, 8, 2, 9600, 0}},
      {"bits=1", "bits=1.", 0, {0, 8, kBadStopBits, 9600, 0}},
      {"control=N", "control=d", 0, {0, 8, 0, 9600, kFlowDtrDsr}},
      {"control=N", "control=C", 0, {0, 8, 0, 9600, kFlowRtsCts}},
      {"control=N", "control=p", 0, {0, 8, 0, 9600, kFlowDtrDsr | kFlowRtsCts}},
      {"control=N", "control=X", 0, {0, 8, 0, 9600, kFlowXonXoff}},
      {"control=N", "control=NN", -356, {}},
      {"+flowcontrol=N", "", -356, {}}};
  for (const auto& [from, to, code, expected] : rows) {
    std::string parameters = sound;
    parameters.replace(parameters.find(from), std::string(from).size(), to);
    SCOPED_TRACE(parameters);
    SerialSettings settings;
    EXPECT_EQ(code, Read(parameters, &settings));
    EXPECT_EQ(expected.parity, settings.parity);
    EXPECT_EQ(expected.byte_size, settings.byte_size);
    EXPECT_EQ(expected.stop_bits, settings.stop_bits);
    EXPECT_EQ(expected.baud_rate, settings.baud_rate);
    EXPECT_EQ(expected.flow_control, settings.flow_control);
  }
}

TEST(SerialSettingsTest, SlowLinesHaveLongerTimeouts) {
  const std::pair<uint32_t, uint32_t> rows[] = {{1200, 16200}, {2400, 7800},  {4800, 3600},
                                                {9600, 2000},  {14400, 2000}, {19200, 2000},
                                                {38400, 2000}, {57600, 2000}, {115200, 2000}};
  for (const auto& [speed, constant] : rows) {
    SerialSettings settings;
    EXPECT_EQ(VEXO_OK,
              Read("baudrate=" + std::to_string(speed) + "+parity=n+bytesize=8+stopbits=1+flowcontrol=n", &settings));
    EXPECT_EQ(speed, settings.baud_rate);
    EXPECT_EQ(constant, SerialWriteConstant(4096, speed));
  }
}

}  // namespace
}  // namespace vexo
