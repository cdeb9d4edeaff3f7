// Converts any descriptor. The conversion must stay within its buffers, and its result must be a device URI of a known
// kind, unless the fields give it no device, an empty end or too many parameters.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "port/descriptor.h"
#include "port/device_uri.h"
#include "require.h"

namespace {

bool IsRefusedByTheParser(const std::string& uri) {
  const auto parameters = std::count(uri.begin(), uri.end(), '+') + 1;
  return std::strchr("=?/", uri.back()) != nullptr || parameters > vexo::kMaxUriParameters;
}

// The steps of the port factory for an accepted descriptor: parse, select the kind, format for the driver.
void RequireUsable(const std::string& text) {
  vexo::DeviceUri uri;
  const int32_t parsed = vexo::ParseDeviceUri(&uri, text.c_str());
  if (parsed != 0) {
    Require(parsed == -1 && IsRefusedByTheParser(text));
    return;
  }
  Require(vexo::SelectPortKind(uri.type) >= 0);
  char canonical[vexo::kUriBufferSize];
  Require(vexo::FormatDeviceUri(uri, canonical, sizeof(canonical)) == 0);
  Require(text.rfind(canonical, 0) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string descriptor(reinterpret_cast<const char*>(data), size);
  // Exact size, so that the sanitizer detects any access beyond the end.
  const auto copy = std::make_unique<char[]>(size + 1);
  std::memcpy(copy.get(), descriptor.c_str(), size + 1);

  char uri[vexo::kUriBufferSize];
  std::memset(uri, '#', sizeof(uri));
  const int32_t result = vexo::ConvertDescriptorToUri(copy.get(), uri);
  if (result != 0) {
    Require(result == -301 || result == -4 || result == -2);
    return 0;
  }
  Require(strnlen(uri, sizeof(uri)) <= vexo::kMaxUriLength);
  Require(std::strncmp(uri, vexo::kUriScheme, vexo::kUriSchemeLength) == 0);
  RequireUsable(uri);
  return 0;
}
