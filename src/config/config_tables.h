// The tables of a configuration file: settings and printer models. No I/O: text in, tables out.
#ifndef VEXO_CONFIG_CONFIG_TABLES_H_
#define VEXO_CONFIG_CONFIG_TABLES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vexo {

inline constexpr size_t kConfigTextSize = 64;
inline constexpr size_t kMaxSettings = 128;
inline constexpr size_t kMaxModels = 512;  // Includes the built-in models.

// Zero-padded; a text of full size has no terminating zero.
using ConfigText = std::array<char, kConfigTextSize>;

// Compatibility: a text that does not fit leaves its field empty instead of being truncated, so that a name never
// matches another one's beginning.
constexpr ConfigText MakeConfigText(std::string_view text) {
  ConfigText field = {};
  for (size_t i = 0; text.size() <= field.size() && i < text.size(); ++i) {
    field[i] = text[i];
  }
  return field;
}

std::string_view ViewText(const ConfigText& field);

struct Setting {
  ConfigText key;
  ConfigText value;
};

struct ModelRecord {
  static constexpr size_t kNameText = 1;

  std::string_view name() const { return ViewText(texts[kNameText]); }

  int32_t number;
  std::array<ConfigText, 4> texts;
  std::array<int32_t, 4> values;
  float factor;
};

// Compatibility: the maker's tools read and write records of this size.
static_assert(sizeof(ModelRecord) == 280, "the maker's tools count on records of this size");

struct SdkConfig {
  // The first matching record, or null.
  const ModelRecord* FindModel(int32_t number) const;
  const ModelRecord* FindModelByName(std::string_view name) const;

  std::vector<Setting> settings;
  std::vector<ModelRecord> models;
};

// Appends the contents of a decoded file until the tables are full. Rejects nothing: a number or text that is missing
// or does not fit its field becomes 0 or empty. Throws std::bad_alloc.
void AppendConfigText(std::string_view text, SdkConfig* config);

}  // namespace vexo

#endif  // VEXO_CONFIG_CONFIG_TABLES_H_
