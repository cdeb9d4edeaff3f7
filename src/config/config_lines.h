// How the text of a configuration file falls into lines and sections.
#ifndef VEXO_CONFIG_CONFIG_LINES_H_
#define VEXO_CONFIG_CONFIG_LINES_H_

#include <cstddef>
#include <string_view>

namespace vexo {

inline constexpr size_t kMaxConfigLines = 770;

enum class ConfigSection {
  kNone,      // Before the first section line.
  kSettings,  // The first section, whatever its name.
  kModels,    // The second one.
  kUnused,    // All others.
};

struct ConfigLine {
  std::string_view text;  // Never empty. Ends before the first zero byte.
  size_t row = 0;         // Counted from 1, as editors do.
  ConfigSection section = ConfigSection::kNone;
  bool opens_section = false;
};

// The lines of a text in their order, without the empty ones. Borrows the text.
class ConfigLines {
 public:
  explicit ConfigLines(std::string_view text) : rest_(text) {}

  // False at the end.
  bool Next(ConfigLine* line);

 private:
  std::string_view TakeLine();

  std::string_view rest_;
  size_t row_ = 0;
  ConfigSection section_ = ConfigSection::kNone;
};

}  // namespace vexo

#endif  // VEXO_CONFIG_CONFIG_LINES_H_
