// For any file content, packages and blocks must equal those of a simple reference builder, and only the correct answer
// may confirm a package.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>

#include "download/package.h"
#include "download/ymodem_block.h"
#include "protocol/bytes.h"
#include "require.h"

namespace {

using vexo::Bytes;

// Input bytes in order, then zeros.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : left_(data, data + size) {}

  uint8_t TakeByte() {
    const uint8_t byte = left_.empty() ? 0 : left_.front();
    left_.erase(left_.begin(), left_.begin() + (left_.empty() ? 0 : 1));
    return byte;
  }
  uint32_t TakeNumber(int bytes) {
    uint32_t number = 0;
    for (int i = 0; i < bytes; ++i) {
      number = number << 8 | TakeByte();
    }
    return number;
  }
  const Bytes& Rest() const { return left_; }

 private:
  Bytes left_;
};

uint32_t ReferenceSum(const Bytes& bytes, size_t count) {
  uint32_t sum = 0;
  for (size_t i = 0; i < count; ++i) {
    sum = (sum + bytes[i]) % 65536;
  }
  return sum;
}

void AppendNumber(Bytes* bytes, uint32_t number, int size) {
  for (; size > 0; --size, number /= 256) {
    bytes->push_back(static_cast<uint8_t>(number % 256));
  }
}

// Reference package for `file`, following a package with the data area `before`.
Bytes ReferencePackage(uint32_t index, const Bytes& file, Bytes before, vexo::Filler filler) {
  const size_t cleared = filler == vexo::Filler::kZeros ? before.size() : std::min<size_t>(2, before.size());
  std::fill_n(before.begin(), cleared, uint8_t{0});
  std::copy(file.begin(), file.end(), before.begin());
  Bytes package;
  AppendNumber(&package, 0xAABBCCDD, 4);
  AppendNumber(&package, index, 4);
  AppendNumber(&package, static_cast<uint32_t>(file.size()), 2);
  vexo::Append(&package, before);
  AppendNumber(&package, ReferenceSum(package, package.size()), 2);
  return package;
}

void CheckPackages(Input input) {
  const size_t data_size = input.TakeByte() + size_t{1};
  const vexo::Filler filler = input.TakeByte() % 2 == 0 ? vexo::Filler::kZeros : vexo::Filler::kPreviousPackage;
  uint32_t index = input.TakeNumber(4);
  const Bytes file = input.Rest();
  Bytes package = vexo::MakePackage(data_size);
  Bytes area(data_size);
  for (size_t at = 0; at < file.size(); at += data_size, ++index) {
    const Bytes part(file.begin() + static_cast<ptrdiff_t>(at),
                     file.begin() + static_cast<ptrdiff_t>(std::min(file.size(), at + data_size)));
    vexo::FillPackage(&package, index, part.data(), part.size(), filler);
    Require(package == ReferencePackage(index, part, area, filler));
    area.assign(package.begin() + vexo::kPackageDataOffset, package.end() - 2);

    // The correct answer, then with one byte changed.
    Bytes answer(package.begin(), package.begin() + 8);
    AppendNumber(&answer, 0, 2);
    AppendNumber(&answer, ReferenceSum(answer, 8), 2);
    const bool confirmable = answer[10] != 0 || answer[11] != 0;
    const bool confirmed = vexo::CheckAnswer(package, answer.data()) == vexo::PackageAnswer::kConfirmed;
    Require(confirmed == confirmable);
    answer[part.front() % answer.size()] ^= static_cast<uint8_t>(part.back() | 1);
    Require(vexo::CheckAnswer(package, answer.data()) != vexo::PackageAnswer::kConfirmed);
  }
}

// Bit by bit, over the data and 16 further zero bits.
uint32_t ReferenceChecksum(const Bytes& data) {
  uint32_t crc = 0;
  for (size_t bit = 0; bit < (data.size() + 2) * 8; ++bit) {
    const uint32_t next = bit / 8 < data.size() ? data[bit / 8] >> (7 - bit % 8) & 1U : 0U;
    crc = crc * 2 + next;
    crc = crc >= 0x10000 ? crc ^ 0x11021 : crc;
  }
  return crc;
}

Bytes ReferenceBlock(uint8_t mark, uint32_t sequence, const Bytes& data) {
  Bytes block = {mark, static_cast<uint8_t>(sequence % 256), static_cast<uint8_t>(255 - sequence % 256)};
  vexo::Append(&block, data);
  AppendNumber(&block, ReferenceChecksum(data), 2);
  return block;
}

void CheckBlocks(Input input) {
  const auto size = static_cast<int32_t>(input.TakeNumber(4) & 0x7FFFFFFF);
  const uint32_t index = input.TakeNumber(4);
  const Bytes content = input.Rest();

  const std::string name(content.begin(), content.end());
  const vexo::YModemShortBlock header = vexo::MakeYModemHeaderBlock(name, size);
  const std::string digits = std::to_string(size);
  std::string text = name.substr(0, 126 - digits.size()) + '\0' + digits;
  text.resize(128);
  Require(Bytes(header.begin(), header.end()) == ReferenceBlock(1, 0, {text.begin(), text.end()}));

  vexo::YModemDataBlock block = {};
  Bytes area(1024);
  for (size_t at = 0; at <= content.size(); at += 1024) {
    const size_t count = std::min<size_t>(1024, content.size() - at);
    const auto block_index = static_cast<uint32_t>(index + at / 1024);
    vexo::FillYModemDataBlock(&block, block_index, content.data() + at, count);
    std::fill(area.begin(), count == 0 ? area.end() : area.begin(), uint8_t{0});
    std::copy_n(content.begin() + static_cast<ptrdiff_t>(at), count, area.begin());
    Require(Bytes(block.begin(), block.end()) == ReferenceBlock(2, block_index + 1, area));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CheckPackages(Input(data, size));
  CheckBlocks(Input(data, size));
  return 0;
}
