// The tables of a configuration file: settings and printer models. Pure: text in, tables out.
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
inline constexpr size_t kMaxModels = 512;  // The built-in ones included.

// Padded with zeros; a text of full size has none at its end.
using ConfigText = std::array<char, kConfigTextSize>;

// A text that does not fit leaves its field empty: half a name would be another name.
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

static_assert(sizeof(ModelRecord) == 280, "the maker's tools count on records of this size");

struct SdkConfig {
  // The first record that matches, or null.
  const ModelRecord* FindModel(int32_t number) const;
  const ModelRecord* FindModelByName(std::string_view name) const;

  std::vector<Setting> settings;
  std::vector<ModelRecord> models;
};

// Appends what a decoded file holds, as far as the tables have room. Nothing is refused: a number or a text that does
// not fit its field, or is missing, leaves it 0 or empty. Throws std::bad_alloc.
void AppendConfigText(std::string_view text, SdkConfig* config);

}  // namespace vexo

#endif  // VEXO_CONFIG_CONFIG_TABLES_H_
