#include "vexoctl/support/firmware_image.h"

#include <cstdint>

namespace vexoctl {
namespace {

constexpr size_t kHeaderSize = 76;
constexpr size_t kBodyLengthOffset = 4;

uint32_t BodyLength(std::string_view header) {
  uint32_t length = 0;
  for (size_t i = 0; i < sizeof length; ++i) {
    length |= uint32_t{static_cast<uint8_t>(header[kBodyLengthOffset + i])} << (8 * i);
  }
  return length;
}

}  // namespace

FirmwareImage ExamineFirmwareImage(std::string_view content) {
  FirmwareImage image;
  for (size_t offset = 0; offset < content.size(); ++image.segments) {
    const size_t left = content.size() - offset;
    if (left < kHeaderSize) {
      image.fault = {
          offset, "has " + std::to_string(left) + " bytes of its " + std::to_string(kHeaderSize) + "-byte header only"};
      return image;
    }
    const size_t body = BodyLength(content.substr(offset));
    if (body > left - kHeaderSize) {
      image.fault = {offset, "announces a body of " + std::to_string(body) + " bytes, of which the file holds " +
                                 std::to_string(left - kHeaderSize)};
      return image;
    }
    offset += kHeaderSize + body;
  }
  return image;
}

}  // namespace vexoctl
