// What a soak downloads: images of firmware, which serve as files and fonts, too. Each can be told from all others and
// from one that was altered on its way.
#ifndef VEXO_SOAK_CARGO_H_
#define VEXO_SOAK_CARGO_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vexo::test {

// A valid image of two segments that depends on the number alone.
std::string MakeCargo(uint32_t number);

void WriteFile(const std::filesystem::path& path, const std::string& bytes);

// The numbers of the images that a printer has stored in the folder, which is empty then; UINT32_MAX for what is none.
std::vector<uint32_t> UnloadCargo(const std::filesystem::path& folder);

}  // namespace vexo::test

#endif  // VEXO_SOAK_CARGO_H_
