#include "discovery/interface_path.h"

#include "port/bounded_text.h"

namespace vexo {
namespace {

constexpr char kSeparator = '#';
constexpr int kPartsBeforeInstance = 2;

}  // namespace

std::string InstanceOfInterfacePath(std::string_view path) {
  for (int part = 0; part < kPartsBeforeInstance; ++part) {
    const size_t end = path.find(kSeparator);
    if (end == std::string_view::npos) {
      return {};
    }
    path.remove_prefix(end + 1);
  }
  std::string instance(path.substr(0, path.find(kSeparator)));
  for (char& c : instance) {
    c = UpperCaseAscii(c);
  }
  return instance;
}

}  // namespace vexo
