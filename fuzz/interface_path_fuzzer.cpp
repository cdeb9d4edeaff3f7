// The instance part is what splitting the whole path at every "#" gives as its third piece, in capitals.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "discovery/interface_path.h"
#include "require.h"

namespace {

std::vector<std::string> Split(const std::string& path) {
  std::vector<std::string> parts(1);
  for (const char c : path) {
    if (c == '#') {
      parts.emplace_back();
    } else {
      parts.back() += c >= 'a' && c <= 'z' ? static_cast<char>(c - ' ') : c;
    }
  }
  return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path(reinterpret_cast<const char*>(data), size);
  // Exactly as large as it must be, so that no byte beyond its end is touched unnoticed.
  const auto copy = std::make_unique<char[]>(size);
  path.copy(copy.get(), size);
  const std::vector<std::string> parts = Split(path);
  Require(vexo::InstanceOfInterfacePath({copy.get(), size}) == (parts.size() < 3 ? "" : parts[2]));
  return 0;
}
