// Splits the text of a configuration file into lines and sections.
#ifndef VEXO_CONFIG_CONFIG_LINES_H_
#define VEXO_CONFIG_CONFIG_LINES_H_

#include <cstddef>
#include <string_view>

namespace vexo {

// Compatibility: lines beyond this number are ignored. Files in the field are written for the limits of the tables.
inline constexpr size_t kMaxConfigLines = 770;

enum class ConfigSection {
  kNone,      // Before the first section line.
  kSettings,  // Compatibility: the first section, whatever its name; sections count by position.
  kModels,    // The second section.
  kUnused,    // All others.
};

struct ConfigLine {
  std::string_view text;  // Never empty. Ends before the first zero byte.
  size_t row = 0;         // 1-based.
  ConfigSection section = ConfigSection::kNone;
  bool opens_section = false;
};

// Iterates over the non-empty lines of a text. Borrows the text.
class ConfigLines {
 public:
  explicit ConfigLines(std::string_view text) : rest_(text) {}

  // Returns false at the end.
  bool Next(ConfigLine* line);

 private:
  std::string_view TakeLine();

  std::string_view rest_;
  size_t row_ = 0;
  ConfigSection section_ = ConfigSection::kNone;
};

}  // namespace vexo

#endif  // VEXO_CONFIG_CONFIG_LINES_H_
