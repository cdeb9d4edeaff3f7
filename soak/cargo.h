// Content for the downloads of the soak test: firmware images, also used as files and fonts. Each one is unique, so
// that mix-ups and altered bytes are detected.
#ifndef VEXO_SOAK_CARGO_H_
#define VEXO_SOAK_CARGO_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vexo::test {

// A valid image of two segments, determined by the number.
std::string MakeImage(uint32_t number);

void WriteFile(const std::filesystem::path& path, const std::string& bytes);

// Reads and deletes the images that a printer stored in the folder. Returns their numbers, UINT32_MAX for altered ones.
std::vector<uint32_t> TakeStoredImages(const std::filesystem::path& folder);

}  // namespace vexo::test

#endif  // VEXO_SOAK_CARGO_H_
