// Byte strings and little-endian fields in them.
#ifndef VEXO_PROTOCOL_BYTES_H_
#define VEXO_PROTOCOL_BYTES_H_

#include <cstdint>
#include <string_view>
#include <vector>

namespace vexo {

using Bytes = std::vector<uint8_t>;

void Append(Bytes* bytes, std::string_view text);
void Append(Bytes* bytes, const Bytes& more);

constexpr uint8_t LowByte(uint32_t value) { return static_cast<uint8_t>(value & 0xFF); }

constexpr uint8_t HighByte(uint32_t value) { return static_cast<uint8_t>((value >> 8) & 0xFF); }

constexpr uint16_t ReadLittleEndian16(const uint8_t* bytes) {
  return static_cast<uint16_t>(bytes[0] | (bytes[1] << 8));
}

constexpr uint32_t ReadLittleEndian32(const uint8_t* bytes) {
  return static_cast<uint32_t>(ReadLittleEndian16(bytes)) | static_cast<uint32_t>(ReadLittleEndian16(bytes + 2)) << 16;
}

constexpr void StoreLittleEndian16(uint8_t* bytes, uint32_t value) {
  bytes[0] = LowByte(value);
  bytes[1] = HighByte(value);
}

constexpr void StoreLittleEndian32(uint8_t* bytes, uint32_t value) {
  StoreLittleEndian16(bytes, value);
  StoreLittleEndian16(bytes + 2, value >> 16);
}

}  // namespace vexo

#endif  // VEXO_PROTOCOL_BYTES_H_
