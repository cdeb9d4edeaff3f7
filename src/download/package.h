// The packages that files and fonts travel in, and the printer's answers to them. All fields are little-endian:
//
//   0       4  magic 0xAABBCCDD
//   4       4  index of the package, from 0
//   8       2  how many bytes of the data area belong to the file
//   10      P  data area, always whole
//   10 + P  2  sum of all bytes before it, modulo 65536
//
// The printer confirms a package with 12 bytes: its first eight bytes, two zeros, and the sum of the eight.
#ifndef VEXO_DOWNLOAD_PACKAGE_H_
#define VEXO_DOWNLOAD_PACKAGE_H_

#include <cstddef>
#include <cstdint>

#include "protocol/bytes.h"

namespace vexo {

inline constexpr size_t kPackageDataOffset = 10;
inline constexpr size_t kPackageOverhead = 12;
inline constexpr uint32_t kPackageAnswerSize = 12;

// What follows the file's bytes in the last package.
enum class Filler {
  kZeros,
  kPreviousPackage,  // Its bytes beyond the second one; printers take fonts so.
};

// The sum of the bytes, modulo 65536.
uint16_t SumOf(const uint8_t* bytes, size_t count);

// A package of `data_size` bytes of data, with its magic and otherwise zero.
Bytes MakePackage(size_t data_size);

// Fills a package with the next `count` bytes of the file, at most as many as its data area holds.
void FillPackage(Bytes* package, uint32_t index, const uint8_t* data, size_t count, Filler filler);

// What an answer of 12 bytes says about a package.
enum class PackageAnswer {
  kConfirmed,
  kRefused,      // Without a checksum, of another package, or with a fault in it.
  kBadChecksum,  // Damaged on its way.
};

PackageAnswer JudgeAnswer(const Bytes& package, const uint8_t* answer);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_PACKAGE_H_
