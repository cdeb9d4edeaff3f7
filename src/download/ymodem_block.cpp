#include "download/ymodem_block.h"

#include <algorithm>
#include <string>

#include "protocol/bytes.h"

namespace vexo {
namespace {

constexpr uint8_t kShortBlockMark = 0x01;
constexpr uint8_t kDataBlockMark = 0x02;
constexpr size_t kDataOffset = 3;
constexpr uint16_t kPolynomial = 0x1021;

constexpr std::array<uint16_t, 256> MakeChecksumTable() {
  std::array<uint16_t, 256> table = {};
  for (uint32_t byte = 0; byte < table.size(); ++byte) {
    uint32_t remainder = byte << 8;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder << 1) ^ ((remainder & 0x8000) != 0 ? kPolynomial : 0U);
    }
    table[byte] = static_cast<uint16_t>(remainder);
  }
  return table;
}

constexpr std::array<uint16_t, 256> kChecksumTable = MakeChecksumTable();

template <size_t size>
void Seal(std::array<uint8_t, size>* block, uint8_t mark, uint8_t sequence) {
  constexpr size_t kDataSize = size - kYModemOverhead;
  uint8_t* const bytes = block->data();
  bytes[0] = mark;
  bytes[1] = sequence;
  bytes[2] = static_cast<uint8_t>(~sequence);
  StoreLittleEndian16(bytes + kDataOffset + kDataSize, YModemChecksum(bytes + kDataOffset, kDataSize));
}

}  // namespace

uint16_t YModemChecksum(const uint8_t* data, size_t count) {
  uint32_t crc = 0;
  for (const uint8_t* byte = data; byte != data + count; ++byte) {
    crc = (crc << 8) ^ kChecksumTable[((crc >> 8) ^ *byte) & 0xFF];
  }
  return static_cast<uint16_t>(crc);
}

YModemShortBlock MakeYModemHeaderBlock(std::string_view file_name, int32_t file_size) {
  YModemShortBlock block = {};
  const std::string size = std::to_string(file_size);
  const size_t name_length = std::min(file_name.size(), kYModemHeaderDataSize - size.size() - 2);
  uint8_t* const data = block.data() + kDataOffset;
  std::copy_n(file_name.begin(), name_length, data);
  std::copy(size.begin(), size.end(), data + name_length + 1);
  Seal(&block, kShortBlockMark, 0);
  return block;
}

YModemShortBlock MakeYModemClosingBlock() {
  YModemShortBlock block = {};
  Seal(&block, kShortBlockMark, 0);
  return block;
}

void FillYModemDataBlock(YModemDataBlock* block, uint32_t index, const uint8_t* data, size_t count) {
  if (count == 0) {
    block->fill(0);
  }
  std::copy_n(data, count, block->data() + kDataOffset);
  Seal(block, kDataBlockMark, LowByte(index + 1));
}

uint32_t CountYModemBlocks(int32_t file_size) {
  return static_cast<uint32_t>(file_size) / static_cast<uint32_t>(kYModemDataSize) + 1;
}

}  // namespace vexo
