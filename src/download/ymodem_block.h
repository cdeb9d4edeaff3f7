// The blocks of the printer's variety of YModem-1K. It departs from the published protocol: the checksum travels low
// byte first, the short last block is filled up with what the block before it left, and the file name may be a path.
//
//   header, closing block   01 00 FF, 128 bytes of data, checksum (2)
//   data block              02, sequence number, its complement, 1024 bytes of data, checksum (2)
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

// CRC-16 with the polynomial 0x1021, from 0, unreflected: the checksum of XModem.
uint16_t YModemChecksum(const uint8_t* data, size_t count);

// Announces a file: its name, a zero, its size in decimal, and zeros. Of a name that leaves no room for the size and
// two zeros, as much as does.
YModemShortBlock MakeYModemHeaderBlock(std::string_view file_name, int32_t file_size);

// Ends the session.
YModemShortBlock MakeYModemClosingBlock();

// Fills the block with the `count` bytes of the file, at most 1024, that belong to block `index`, counted from 0. Of
// the rest it keeps what it holds: begin with a zeroed one. Without any bytes it is all zeros.
void FillYModemDataBlock(YModemDataBlock* block, uint32_t index, const uint8_t* data, size_t count);

// Blocks that a file of this size takes. A last full block is followed by an extra one: printers wait for it.
uint32_t CountYModemBlocks(int32_t file_size);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_YMODEM_BLOCK_H_
