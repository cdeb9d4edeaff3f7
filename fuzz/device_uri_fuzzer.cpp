// Formatting a parsed URI must give the same text without the ignored tail. Parsing that text must give the same URI
// again, unless it now ends in an empty value.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "port/device_uri.h"
#include "require.h"

namespace {

void RequireSame(const vexo::DeviceUri& left, const vexo::DeviceUri& right) {
  Require(std::strcmp(left.type, right.type) == 0 && std::strcmp(left.device, right.device) == 0);
  Require(left.count == right.count);
  for (int32_t i = 0; i < left.count; ++i) {
    Require(std::strcmp(left.params[i].key, right.params[i].key) == 0);
    Require(std::strcmp(left.params[i].value, right.params[i].value) == 0);
  }
}

// The ignored tail must begin with a parameter without "=".
void RequireIgnorable(const std::string& tail) {
  if (!tail.empty()) {
    Require(tail[0] == '?' || tail[0] == '+');
    const std::string parameter = tail.substr(1, tail.find('+', 1) - 1);
    Require(parameter.find('=') == std::string::npos);
  }
}

bool HasEmptyEnd(const vexo::DeviceUri& uri, const std::string& formatted) {
  return uri.count == 0 ? *uri.device == '\0' : std::strchr("=?", formatted.back()) != nullptr;
}

void RequireRoundTrip(const vexo::DeviceUri& uri, const std::string& text) {
  char formatted[vexo::kUriBufferSize];
  Require(vexo::FormatDeviceUri(uri, formatted, sizeof(formatted)) == 0);
  Require(text.rfind(formatted, 0) == 0);
  RequireIgnorable(text.substr(std::strlen(formatted)));

  vexo::DeviceUri again;
  const int32_t parsed = vexo::ParseDeviceUri(&again, formatted);
  Require(parsed == (HasEmptyEnd(uri, formatted) ? -1 : 0));
  if (parsed == 0) {
    RequireSame(uri, again);
  }
}

void RequireFormatKeepsToTheBuffer(const vexo::DeviceUri& uri, const std::string& text) {
  const int32_t size = text.empty() ? 0 : static_cast<uint8_t>(text.back());
  const auto out = std::make_unique<char[]>(static_cast<size_t>(size));
  const int32_t result = vexo::FormatDeviceUri(uri, out.get(), size);
  Require(result == 0 || result == -2);
  if (size > 0) {
    Require(text.rfind(out.get(), 0) == 0);
  }
}

void RequireParametersAreFound(const vexo::DeviceUri& uri) {
  for (int32_t i = uri.count - 1; i >= 0; --i) {
    const char* const value = vexo::FindUriParameter(uri, uri.params[i].key);
    Require(value != nullptr);
    Require(value == uri.params[i].value || value < uri.params[i].key);
  }
}

void RequireAppendStaysInside(const std::string& text) {
  const auto uri = std::make_unique<char[]>(vexo::kUriBufferSize);
  std::memcpy(uri.get(), text.c_str(), text.size() + 1);
  Require(vexo::AppendUriParameter(uri.get(), "vid", text.c_str()) == 0);
  const std::string appended = uri.get();
  Require(appended.size() <= vexo::kMaxUriLength && appended.rfind(text, 0) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), strnlen(reinterpret_cast<const char*>(data), size));
  vexo::DeviceUri uri;
  const int32_t parsed = vexo::ParseDeviceUri(&uri, text.c_str());
  if (text.size() > vexo::kMaxUriLength) {
    Require(parsed == -301);
    return 0;
  }
  RequireAppendStaysInside(text);
  if (parsed != 0) {
    Require(parsed == -1);
    return 0;
  }
  RequireRoundTrip(uri, text);
  RequireFormatKeepsToTheBuffer(uri, text);
  RequireParametersAreFound(uri);
  return 0;
}
