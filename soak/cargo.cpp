#include "soak/cargo.h"

#include <cstddef>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

#include "support/report_frames.h"

namespace vexo::test {
namespace {

namespace fs = std::filesystem;

constexpr size_t kHeaderSize = 76;
constexpr size_t kNumberOffset = 8;  // An unused field of the first header.

uint32_t Get(const std::string& bytes, size_t offset) {
  uint32_t value = 0;
  for (int i = 3; i >= 0; --i) {
    value = value << 8 | static_cast<uint8_t>(bytes[offset + i]);
  }
  return value;
}

std::string MakeSegment(std::minstd_rand* random, uint32_t length) {
  std::string segment = "HEAD" + std::string(kHeaderSize - 4 + length, '\0');
  segment.replace(4, 4, LittleEndian(length, 4));
  for (size_t i = kHeaderSize; i < segment.size(); ++i) {
    segment[i] = static_cast<char>((*random)() >> 8);
  }
  return segment;
}

}  // namespace

std::string MakeImage(uint32_t number) {
  std::minstd_rand random(number + 1);
  std::string image = MakeSegment(&random, 1 + random() % 6000);
  image += MakeSegment(&random, 1 + random() % 1000);
  return image.replace(kNumberOffset, 4, LittleEndian(number, 4));
}

void WriteFile(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

std::vector<uint32_t> TakeStoredImages(const fs::path& folder) {
  std::vector<uint32_t> numbers;
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".bin") {  // The printer renames a file to .bin when it is complete.
      files.push_back(entry.path());
    }
  }
  for (const fs::path& file : files) {
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    stream.close();
    const uint32_t number = bytes.size() < kHeaderSize ? UINT32_MAX : Get(bytes, kNumberOffset);
    numbers.push_back(number != UINT32_MAX && bytes == MakeImage(number) ? number : UINT32_MAX);
    std::error_code ignored;
    fs::remove(file, ignored);
  }
  return numbers;
}

}  // namespace vexo::test
