// The packages of file and font downloads and the printer's answers. All fields are little-endian:
//
//   0       4  magic 0xAABBCCDD
//   4       4  index of the package, from 0
//   8       2  how many bytes of the data area belong to the file
//   10      P  data area, always whole
//   10 + P  2  sum of all bytes before it, modulo 65536
//
// The printer confirms a package with 12 bytes: the package's first eight bytes, two zero bytes, and the sum of the
// eight.
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
  kPreviousPackage,  // Compatibility: what the previous package left there, except two cleared bytes.
};

// Returns the sum of the bytes modulo 65536.
uint16_t SumOf(const uint8_t* bytes, size_t count);

// Returns a package with `data_size` bytes of data, zero except for its magic.
Bytes MakePackage(size_t data_size);

// Fills a package with the next `count` bytes of the file; `count` must not exceed its data area.
void FillPackage(Bytes* package, uint32_t index, const uint8_t* data, size_t count, Filler filler);

// The meaning of a 12-byte answer.
enum class PackageAnswer {
  kConfirmed,
  kRefused,      // No checksum, an error code, or the answer to another package.
  kBadChecksum,  // Damaged in transit.
};

PackageAnswer CheckAnswer(const Bytes& package, const uint8_t* answer);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_PACKAGE_H_
