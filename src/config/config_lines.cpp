#include "config/config_lines.h"

#include <algorithm>

namespace vexo {
namespace {

ConfigSection SectionAfter(ConfigSection section) {
  switch (section) {
    case ConfigSection::kNone:
      return ConfigSection::kSettings;
    case ConfigSection::kSettings:
      return ConfigSection::kModels;
    case ConfigSection::kModels:
    case ConfigSection::kUnused:
      break;
  }
  return ConfigSection::kUnused;
}

}  // namespace

// CR LF, CR and LF each end a line.
std::string_view ConfigLines::TakeLine() {
  ++row_;
  const size_t length = rest_.find_first_of("\r\n");
  const std::string_view line = rest_.substr(0, length);
  const bool is_pair = length != std::string_view::npos && rest_.substr(length, 2) == "\r\n";
  rest_.remove_prefix(std::min(line.size() + (is_pair ? 2 : 1), rest_.size()));
  return line;
}

bool ConfigLines::Next(ConfigLine* line) {
  while (!rest_.empty()) {
    std::string_view text = TakeLine();
    text = text.substr(0, text.find('\0'));
    if (text.empty()) {
      continue;
    }
    const bool opens_section = text.find('[') != std::string_view::npos;
    section_ = opens_section ? SectionAfter(section_) : section_;
    *line = {text, row_, section_, opens_section};
    return true;
  }
  return false;
}

}  // namespace vexo
