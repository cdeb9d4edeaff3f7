#include "port/device_uri.h"

#include "core/core_test.h"

namespace vexo {
namespace {

// "vexo:/dev/bus/LPT/LLL..." of `length` characters.
std::string UriOfLength(size_t length) {
  const std::string start = "vexo:/dev/bus/LPT/";
  return start + std::string(length - start.size(), 'L');
}

// "TYPE|DEVICE|key=value|key=value", or the error code.
std::string Parts(const std::string& text) {
  DeviceUri uri;
  const int32_t result = ParseDeviceUri(&uri, text.c_str());
  if (result != 0) {
    return std::to_string(result);
  }
  std::string parts = std::string(uri.type) + "|" + uri.device;
  for (int32_t i = 0; i < uri.count; ++i) {
    parts += std::string("|") + uri.params[i].key + "=" + uri.params[i].value;
  }
  return parts;
}

TEST(DeviceUri, IsParsed) {
  const std::pair<std::string, std::string> rows[] = {
      {"vexo:/dev/bus/USB/DEVICE", "USB|DEVICE"},
      {"vexo:/dev/bus/NET/DEVICE?ip=1.2.3.4+port=9100", "NET|DEVICE|ip=1.2.3.4|port=9100"},
      {"vexo:/dev/bus/COM/COM1/2?a=b", "COM|COM1/2|a=b"},
      {"vexo:/dev/bus//D", "|D"},
      {"vexo:/dev/bus/USB/?vid=1A2B", "USB||vid=1A2B"},
      // A value may be empty, except the last one.
      {"vexo:/dev/bus/NET/D?ip=+port=1", "NET|D|ip=|port=1"},
      {"vexo:/dev/bus/NET/D?ip=1+port=", "-1"},
      {"vexo:/dev/bus/NET/D?", "-1"},
      // A parameter without "=" ends the list.
      {"vexo:/dev/bus/NET/D?ip=1.2.3.4+port", "NET|D|ip=1.2.3.4"},
      {"vexo:/dev/bus/NET/D?ip=1.2.3.4+x+port=1", "NET|D|ip=1.2.3.4"},
      {"vexo:/dev/bus/NET/D?ip", "NET|D"},
      // Text is neither decoded nor trimmed.
      {"vexo:/dev/bus/NET/ D ? ip = %41 ", "NET| D | ip = %41 "},
      // At most eight parameters.
      {"vexo:/dev/bus/X/D?a=1+b=2+c=3+d=4+e=5+f=6+g=7+h=8+x", "X|D|a=1|b=2|c=3|d=4|e=5|f=6|g=7|h=8"},
      {"vexo:/dev/bus/X/D?a=1+b=2+c=3+d=4+e=5+f=6+g=7+h=8+i=9", "-1"},
      {"vexo:/dev/bus", "-1"},
      {"VEXO:/dev/bus/USB/DEVICE", "-1"},
      {"vexo:/dev/bus/USB/", "-1"},
      {UriOfLength(255), "LPT|" + std::string(255 - 18, 'L')},
      {UriOfLength(256), "-301"},
  };
  for (const auto& [text, parts] : rows) {
    EXPECT_EQ(parts, Parts(text)) << text;
  }
  DeviceUri uri;
  EXPECT_EQ(-301, ParseDeviceUri(&uri, nullptr));
}

TEST(DeviceUri, FindsTheFirstParameterOfThatExactName) {
  DeviceUri uri;
  ASSERT_EQ(0, ParseDeviceUri(&uri, "vexo:/dev/bus/NET/D?ips=0+IP=1+ip=2+ip=3+e=+x=4"));
  EXPECT_STREQ("2", FindUriParameter(uri, "ip"));
  EXPECT_STREQ("", FindUriParameter(uri, "e"));
  EXPECT_EQ(nullptr, FindUriParameter(uri, "i"));
}

TEST(DeviceUri, IsFormattedWithinTheBuffer) {
  const std::string text = "vexo:/dev/bus/X/D?a=+b=2";
  DeviceUri uri;
  ASSERT_EQ(0, ParseDeviceUri(&uri, text.c_str()));
  const auto size = static_cast<int32_t>(text.size());
  char out[32] = {};
  EXPECT_EQ(-2, FormatDeviceUri(uri, out, 0));
  EXPECT_EQ(-2, FormatDeviceUri(uri, out, size));
  EXPECT_EQ(text.substr(0, text.size() - 1), out);
  EXPECT_EQ(0, FormatDeviceUri(uri, out, size + 1));
  EXPECT_EQ(text, out);
}

TEST(DeviceUri, AppendedParameterIsCutAtTheEndOfTheBuffer) {
  std::string buffer = UriOfLength(kMaxUriLength - 6) + std::string(kUriBufferSize, '\0');
  EXPECT_EQ(0, AppendUriParameter(buffer.data(), "vid", "1A2B"));
  EXPECT_EQ(UriOfLength(kMaxUriLength - 6) + "?vid=1", buffer.c_str());
}

TEST(DeviceUri, KindMustMatchTheWholeWord) {
  const std::pair<const char*, int32_t> rows[] = {
      {"COM", 0}, {"BSP", 0},       {"LPT", 1},        {"USB", 2},        {"NET", 3},  {"FILE", 4},  {"BT", 5},
      {"BUF", 6}, {"Bluetooth", 5}, {"BLUETOOTH", -4}, {"bluetooth", -4}, {"com", -4}, {"COM3", -4}, {"", -4},
  };
  for (const auto& [type, kind] : rows) {
    EXPECT_EQ(kind, SelectPortKind(type)) << type;
  }
}

}  // namespace
}  // namespace vexo
