// The blocks of the printer's variant of YModem-1K.
//
//   header, closing block   01 00 FF, 128 bytes of data, checksum (2)
//   data block              02, sequence number, its complement, 1024 bytes of data, checksum (2)
//
// Compatibility: printers depart from the published protocol in these points: the checksum is sent low byte first, the
// rest of a short last block is what the block before it left there, and the file name is sent as given, with its path.
#ifndef VEXO_DOWNLOAD_YMODEM_BLOCK_H_
#define VEXO_DOWNLOAD_YMODEM_BLOCK_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vexo {

inline constexpr size_t kYModemHeaderDataSize = 128;
inline constexpr size_t kYModemDataSize = 1024;
inline constexpr size_t kYModemOverhead = 5;

using YModemShortBlock = std::array<uint8_t, kYModemHeaderDataSize + kYModemOverhead>;
using YModemDataBlock = std::array<uint8_t, kYModemDataSize + kYModemOverhead>;

// CRC-16 with polynomial 0x1021 and initial value 0, not reflected: the XModem checksum.
uint16_t YModemChecksum(const uint8_t* data, size_t count);

// Announces a file: its name, a zero byte, its size in decimal, and zeros. A name that leaves no room for the size and
// two zeros is truncated.
YModemShortBlock MakeYModemHeaderBlock(std::string_view file_name, int32_t file_size);

// Ends the transfer.
YModemShortBlock MakeYModemClosingBlock();

// Fills the block with the `count` bytes of the file, at most 1024, of block `index` (from 0). The rest of the block
// keeps its content: start with a zeroed block. With a `count` of 0 the data is all zeros.
void FillYModemDataBlock(YModemDataBlock* block, uint32_t index, const uint8_t* data, size_t count);

// Returns the number of blocks for a file of this size.
//
// Compatibility: a last block that is full is followed by an extra one, which printers wait for.
uint32_t CountYModemBlocks(int32_t file_size);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_YMODEM_BLOCK_H_
