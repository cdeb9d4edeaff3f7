// For any device properties: a device is the maker's if a search for each listed identifier finds it, devices are
// selected as by a simple reference implementation, lists stay within their buffers, and URIs do not grow when a port
// is reopened.
//
// Input: the size of the list, then lines: six properties of a device and five fields of a URI.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "port/bounded_text.h"
#include "port/usb_description.h"
#include "port/usb_identifiers.h"
#include "port/usb_selection.h"
#include "port/usb_uri.h"
#include "require.h"

namespace {

using Lines = std::array<std::string, 11>;

Lines SplitLines(const uint8_t* data, size_t size) {
  Lines lines;
  size_t line = 0;
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == '\n' && line + 1 < lines.size()) {
      ++line;
    } else {
      lines[line] += static_cast<char>(data[i]);
    }
  }
  return lines;
}

bool Contains(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

std::string UpperCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) { return vexo::UpperCaseAscii(c); });
  return text;
}

std::vector<std::string> MakeIdentifiers() {
  std::vector<std::string> identifiers(std::begin(vexo::kMakerIdentifiers), std::end(vexo::kMakerIdentifiers));
  for (const std::string_view family : vexo::kProductFamilies) {
    for (uint32_t model = 0; model < vexo::kModelsPerFamily; ++model) {
      char digits[8];
      (void)std::snprintf(digits, sizeof(digits), "%02X", model);
      identifiers.push_back(std::string(vexo::kFamilyVendor) + std::string(family) + digits);
    }
  }
  return identifiers;
}

bool IsListed(const std::string& hardware_id) {
  static const std::vector<std::string> kIdentifiers = MakeIdentifiers();
  return std::any_of(kIdentifiers.begin(), kIdentifiers.end(),
                     [&](const std::string& identifier) { return Contains(hardware_id, identifier); });
}

void RequireQualification(const vexo::UsbDevice& device) {
  const std::string hardware_id(device.hardware_id);
  const std::string parent_id(device.parent_id);
  const std::string gated(vexo::kGatedPrinter);
  auto expected = vexo::UsbQualification::kNone;
  if (IsListed(hardware_id) || IsListed(parent_id)) {
    expected = vexo::UsbQualification::kMaker;
  } else if (Contains(hardware_id, gated) || Contains(parent_id, gated)) {
    expected = vexo::UsbQualification::kGated;
  }
  vexo::UsbQualifier qualifier([](std::string_view /*hardware_id*/) { return false; });
  Require(qualifier.Qualify(device) == expected);
}

void RequireSelection(const Lines& lines, const vexo::UsbDevice& device) {
  const std::string& name = lines[6];
  const std::string& location = lines[7];
  const std::string& portnum = lines[8];
  const std::string& vid = lines[9];
  const std::string& pid = lines[10];
  const std::string ids = UpperCased("VID_" + vid + "&PID_" + pid);
  const std::string serial = lines[3].substr(std::min(lines[3].rfind('\\') + 1, lines[3].size()));
  bool matched = false;
  if (!vid.empty() && !pid.empty()) {
    matched = Contains(lines[0], ids) || Contains(lines[5], ids);
  }
  if (!location.empty() && UpperCased(location) == UpperCased(lines[1])) {
    matched = true;
  }
  if (!name.empty()) {
    const bool has_serial = Contains(lines[3], "\\");
    matched = matched || UpperCased(name) == UpperCased(lines[2]) ||
              (has_serial && UpperCased(name) == UpperCased(serial)) || Contains(lines[4], name) ||
              Contains(lines[5], name);
  }
  if (!portnum.empty() && Contains(lines[4], portnum)) {
    matched = true;
  }
  Require(vexo::MatchesUsbCriteria(device, {false, name, location, portnum, vid, pid}) == matched);
  Require(vexo::MatchesUsbCriteria(device, {true, name, location, portnum, vid, pid}));
}

void RequireListStaysInside(const vexo::UsbDevice& device, size_t size) {
  const auto buffer = std::make_unique<char[]>(size);  // The exact size of the list.
  vexo::UsbDescriptionList list(buffer.get(), size);
  for (int i = 0; i < 3; ++i) {
    list.Add(device);
  }
  list.Finish();
  const std::string all(buffer.get(), size);
  const size_t length = all.find_last_not_of('\0') + 1;
  Require(length < size);
  Require(length == 0 || all.rfind("USB,", 0) == 0);
  Require(length <= 3 * vexo::kMaxUsbRecordLength - 1);
}

void RequireUriStaysInside(const Lines& lines) {
  vexo::FoundUsbDevice found;
  vexo::CopyText(found.location, sizeof(found.location), lines[1].c_str());
  vexo::CopyText(found.path, sizeof(found.path), lines[2].c_str());
  vexo::CopyText(found.serial, sizeof(found.serial), lines[3].c_str());
  found.has_serial = lines[4].empty();
  const auto uri = std::make_unique<char[]>(vexo::kUriBufferSize);
  vexo::CopyText(uri.get(), vexo::kUriBufferSize, lines[6].c_str());
  const std::string configured = uri.get();
  const size_t length = vexo::LengthWithoutFoundDevice(uri.get());
  Require(length <= configured.size());
  vexo::WriteFoundDevice(uri.get(), length, found);
  const std::string opened = uri.get();
  Require(opened.size() <= vexo::kMaxUriLength && opened.compare(0, length, configured, 0, length) == 0);
  Require(opened.size() == length || std::strchr("=?", opened.back()) == nullptr);
  vexo::WriteFoundDevice(uri.get(), length, found);
  Require(opened == uri.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  const Lines lines = SplitLines(data + 1, size - 1);
  const vexo::UsbDevice device = {lines[0], lines[1], lines[2], lines[3], lines[4], lines[5]};
  RequireQualification(device);
  RequireSelection(lines, device);
  RequireListStaysInside(device, size_t{3} * data[0] + 1);
  RequireUriStaysInside(lines);
  return 0;
}
