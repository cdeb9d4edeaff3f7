#include "vexoctl/firmware_image.h"

namespace vexoctl {
namespace {

constexpr size_t kHeaderSize = 76;
constexpr size_t kBodyLengthOffset = 4;

uint32_t BodyLength(const uint8_t* header) {
  const uint8_t* const field = header + kBodyLengthOffset;
  return field[0] | uint32_t{field[1]} << 8 | uint32_t{field[2]} << 16 | uint32_t{field[3]} << 24;
}

}  // namespace

FirmwareImage ExamineFirmwareImage(const uint8_t* data, size_t size) {
  FirmwareImage image;
  for (size_t offset = 0; offset < size; ++image.segments) {
    const size_t left = size - offset;
    if (left < kHeaderSize) {
      image.fault = {
          offset, "has " + std::to_string(left) + " bytes of its " + std::to_string(kHeaderSize) + "-byte header only"};
      return image;
    }
    const size_t body = BodyLength(data + offset);
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
