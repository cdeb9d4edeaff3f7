#include "download/package.h"

#include <algorithm>
#include <numeric>

namespace vexo {
namespace {

constexpr uint32_t kMagic = 0xAABBCCDD;
constexpr size_t kIndexOffset = 4;
constexpr size_t kCountOffset = 8;
constexpr size_t kChecksumSize = 2;
constexpr size_t kEchoSize = 8;
constexpr size_t kAnswerStateOffset = 8;
constexpr size_t kAnswerChecksumOffset = 10;

// Index, count and the first two bytes of the data area.
constexpr size_t kAlwaysCleared = 8;

}  // namespace

uint16_t SumOf(const uint8_t* bytes, size_t count) {
  return static_cast<uint16_t>(std::accumulate(bytes, bytes + count, uint32_t{0}));
}

Bytes MakePackage(size_t data_size) {
  Bytes package(data_size + kPackageOverhead);
  StoreLittleEndian32(package.data(), kMagic);
  return package;
}

void FillPackage(Bytes* package, uint32_t index, const uint8_t* data, size_t count, Filler filler) {
  uint8_t* const bytes = package->data();
  const size_t checksum_offset = package->size() - kChecksumSize;
  const size_t cleared = filler == Filler::kZeros ? package->size() - kIndexOffset : kAlwaysCleared;
  std::fill_n(bytes + kIndexOffset, cleared, uint8_t{0});
  StoreLittleEndian32(bytes + kIndexOffset, index);
  StoreLittleEndian16(bytes + kCountOffset, static_cast<uint32_t>(count));
  std::copy_n(data, count, bytes + kPackageDataOffset);
  StoreLittleEndian16(bytes + checksum_offset, SumOf(bytes, checksum_offset));
}

PackageAnswer CheckAnswer(const Bytes& package, const uint8_t* answer) {
  const uint16_t checksum = ReadLittleEndian16(answer + kAnswerChecksumOffset);
  const bool is_echo = std::equal(answer, answer + kEchoSize, package.data());
  if (checksum == 0 || !is_echo || ReadLittleEndian16(answer + kAnswerStateOffset) != 0) {
    return PackageAnswer::kRefused;
  }
  return checksum == SumOf(answer, kEchoSize) ? PackageAnswer::kConfirmed : PackageAnswer::kBadChecksum;
}

}  // namespace vexo
