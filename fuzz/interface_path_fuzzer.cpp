// The instance must equal the third part of the path split at "#", in upper case.
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
  // Exact size, so that the sanitizer detects any access beyond the end.
  const auto copy = std::make_unique<char[]>(size);
  path.copy(copy.get(), size);
  const std::vector<std::string> parts = Split(path);
  Require(vexo::InstanceOfInterfacePath({copy.get(), size}) == (parts.size() < 3 ? "" : parts[2]));
  return 0;
}
