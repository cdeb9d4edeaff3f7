#include "port/descriptor.h"

#include <gtest/gtest.h>

#include <string>

namespace vexo {
namespace {

constexpr char kScheme[] = "vexo:/dev/bus/";

// The URI, or the error code.
std::string Convert(std::string descriptor) {
  char uri[kUriBufferSize];
  const int32_t result = ConvertDescriptorToUri(descriptor.data(), uri);
  return result == 0 ? uri : std::to_string(result);
}

TEST(Descriptor, IsConvertedToUri) {
  static const struct {
    const char* descriptor;
    const char* uri;  // After "vexo:/dev/bus/".
  } kRows[] = {
      {"COM3,9600", "COM/COM3?baudrate=9600+parity=n+bytesize=8+stopbits=1+flowcontrol=n"},
      {" COM1 , 115200 ,E,7,2,x", "COM/COM1?baudrate=115200+parity=E+bytesize=7+stopbits=2+flowcontrol=x"},
      {"com1,baudrate_19200", "COM/com1?baudrate=19200+parity=n+bytesize=8+stopbits=1+flowcontrol=n"},
      {"COM1,xBaudrate_1x", "COM/COM1?baudrate=1X+parity=n+bytesize=8+stopbits=1+flowcontrol=n"},
      {"COM1,,, ,2", "COM/COM1?baudrate=+parity=n+bytesize=8+stopbits=2+flowcontrol=n"},
      {"bsp-4,1200,o,7,2,h,ignored", "BSP/bsp-4?baudrate=1200+parity=o+bytesize=7+stopbits=2+flowcontrol=h"},
      {"NET,192.168.1.100", "NET/DEVICE?ip=192.168.1.100+port=9100"},
      {"network, 10.0.0.5 , 9101 ", "NET/DEVICE?ip=10.0.0.5+port=9101"},
      {"NET,10.0.0.5,", "NET/DEVICE?ip=10.0.0.5+port=9100"},
      {"NET,10.0.0.5,  ", "NET/DEVICE?ip=10.0.0.5+port=9100"},
      {"NET,10.0.0.5,, ", "NET/DEVICE?ip=10.0.0.5+port="},
      {"NET,10.0.0.5,,x", "NET/DEVICE?ip=10.0.0.5+port="},
      {",NET,Host.Name", "NET/DEVICE?ip=Host.Name+port=9100"},
      {"BT,001122AABBCC", "BT/DEVICE?address=001122AABBCC+pin=8642"},
      {" bt ,00aa,1234", "BT/DEVICE?address=00aa+pin=1234"},
      // USB: the last recognised field determines the URI.
      {"usb,", "USB/DEVICE"},
      {"USB,xyz", "USB/XYZ"},
      {"USB,USB001,XYZ", "USB/USB001?portnum=USB001"},
      {"USB,USB001,VID_0X1A2B,PID_0X0001", "USB/DEVICE?portnum=USB001+vid=1A2B+pid=0001"},
      {"USB,VID_0X1A2B,PID_0X0001,USB001", "USB/DEVICE?portnum=USB001"},
      {"USB,VID_0X1A2B,PID_0X0001,PORT_#1", "USB/DEVICE?location=PORT_#1"},
      {"USB,PID_0x00ff,VID_0x1a2b", "USB/DEVICE?vid=1A2B+pid=00FF"},
      {"usb,usb002,port_#0003.hub_#0001", "USB/DEVICE?location=PORT_#0003.HUB_#0001+portnum=USB002"},
      {"USB,VID,PID_0", "USB/DEVICE?vid=+pid="},
      {"USB,USB001,USB002", "USB/DEVICE?portnum=USB002"},
      {"USB,,VID_0X1A2B", "USB/?vid=1A2B"},
      // Other kinds. The device keeps its letter case.
      {"lpt1", "LPT/lpt1"},
      {"LPT1:,ignored", "LPT/LPT1:"},
      {"file,C:\\out.bin", "FILE/DEVICE?filename=C:\\out.bin"},
      {"FIL,x", "FILE/DEVICE?filename=x"},
      {"buffer", "BUF/DEVICE"},
      // Fields after the tenth are ignored.
      {"USB,A,B,C,D,E,F,G,H,VID_0X0001,PID_0X0002", "USB/A?vid=0001"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(kScheme + std::string(row.uri), Convert(row.descriptor)) << row.descriptor;
  }
}

TEST(Descriptor, MissingFieldOrUnknownKindIsRefused) {
  for (const char* const descriptor : {"", ",", "  ", ", ", "COM1", "COM1,", "COM1, ", "BSP1", "NET", "BT", "FILE"}) {
    EXPECT_EQ("-301", Convert(descriptor)) << descriptor;
  }
  for (const char* const descriptor : {"XYZ,1", "BTX,1", "FOO,1", "F", "B", "Bluetooth,1", "NE", " ,NET"}) {
    EXPECT_EQ("-4", Convert(descriptor)) << descriptor;
  }
}

TEST(Descriptor, NullIsRefused) {
  char uri[kUriBufferSize];
  EXPECT_EQ(-301, ConvertDescriptorToUri(nullptr, uri));
}

TEST(Descriptor, UriHasAtMost255CharactersAnd254BeforeTheParameters) {
  const std::string file_start = kScheme + std::string("FILE/DEVICE?filename=");
  const std::string lpt_start = kScheme + std::string("LPT/");
  for (const size_t length : {253, 254, 255, 256, 257}) {
    const std::string path(length - file_start.size(), 'p');
    EXPECT_EQ(length <= 255 ? file_start + path : "-2", Convert("FILE," + path));
    const std::string device = "LPT" + std::string(length - lpt_start.size() - 3, 'd');
    EXPECT_EQ(length <= 254 ? lpt_start + device : "-2", Convert(device));
  }
}

}  // namespace
}  // namespace vexo
