#include "port/usb_uri.h"

#include <string_view>

namespace vexo {
namespace {

constexpr char kLocation[] = "location";
constexpr char kDevicePath[] = "deviceid";
constexpr char kSerial[] = "sn";

bool IsParameter(std::string_view parameter, std::string_view key) {
  return parameter.substr(0, key.size()) == key && parameter.substr(key.size(), 1) == "=";
}

}  // namespace

size_t LengthWithoutFoundDevice(const char* uri) {
  const std::string_view text = uri;
  size_t before = text.size();  // Start of the previous parameter if that is a location.
  for (size_t start = text.find('?'); start != std::string_view::npos; start = text.find('+', start + 1)) {
    const std::string_view parameter = text.substr(start + 1);
    if (IsParameter(parameter, kDevicePath)) {
      return before < start ? before : start;
    }
    before = IsParameter(parameter, kLocation) ? start : text.size();
  }
  return text.size();
}

void WriteFoundDevice(char* uri, size_t length, const FoundUsbDevice& device) {
  uri[length] = '\0';
  AppendUriParameter(uri, kLocation, device.location);
  AppendUriParameter(uri, kDevicePath, device.path);
  if (device.has_serial) {
    AppendUriParameter(uri, kSerial, device.serial);
  }
  std::string_view text = uri;
  while (text.size() > length && (text.back() == '=' || text.back() == '?')) {
    const size_t last = text.find_last_of("?+");
    text = text.substr(0, last < length ? length : last);
  }
  uri[text.size()] = '\0';
}

}  // namespace vexo
