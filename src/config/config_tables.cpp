#include "config/config_tables.h"

#include <algorithm>
#include <charconv>

#include "config/config_lines.h"

namespace vexo {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";

std::string_view SkipBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

std::string_view FirstWord(std::string_view text) {
  const std::string_view words = SkipBlanks(text);
  return words.substr(0, words.find_first_of(kBlanks));
}

// Parses a number. Leading blanks, a plus sign and anything after the number are ignored.
template <typename Number>
Number ParseNumber(std::string_view field) {
  field = SkipBlanks(field);
  const bool has_plus = field.size() > 1 && field[0] == '+' && field[1] != '-';
  field.remove_prefix(has_plus ? 1 : 0);
  Number number = 0;
  std::from_chars(field.data(), field.data() + field.size(), number);
  return number;
}

// Removes the next field from the front of a record. Past the last field, returns an empty one.
std::string_view TakeField(std::string_view* record) {
  const std::string_view field = record->substr(0, record->find(','));
  record->remove_prefix(std::min(field.size() + 1, record->size()));
  return field;
}

ModelRecord ParseModel(std::string_view line) {
  ModelRecord model = {};
  model.number = ParseNumber<int32_t>(TakeField(&line));
  for (ConfigText& text : model.texts) {
    text = MakeConfigText(TakeField(&line));
  }
  for (int32_t& value : model.values) {
    value = ParseNumber<int32_t>(TakeField(&line));
  }
  model.factor = ParseNumber<float>(TakeField(&line));
  return model;
}

void AppendSetting(std::string_view line, std::vector<Setting>* settings) {
  const size_t sign = line.find('=');
  if (sign != std::string_view::npos && settings->size() < kMaxSettings) {
    settings->push_back(
        {MakeConfigText(FirstWord(line.substr(0, sign))), MakeConfigText(FirstWord(line.substr(sign + 1)))});
  }
}

void AppendModel(std::string_view line, std::vector<ModelRecord>* models) {
  if (models->size() < kMaxModels) {
    models->push_back(ParseModel(line));
  }
}

template <typename Matches>
const ModelRecord* FindFirst(const std::vector<ModelRecord>& models, Matches matches) {
  const auto found = std::find_if(models.begin(), models.end(), matches);
  return found != models.end() ? &*found : nullptr;
}

}  // namespace

std::string_view ViewText(const ConfigText& field) {
  return {field.data(), static_cast<size_t>(std::find(field.begin(), field.end(), '\0') - field.begin())};
}

const ModelRecord* SdkConfig::FindModel(int32_t number) const {
  return FindFirst(models, [number](const ModelRecord& model) { return model.number == number; });
}

const ModelRecord* SdkConfig::FindModelByName(std::string_view name) const {
  return FindFirst(models, [name](const ModelRecord& model) { return model.name() == name; });
}

void AppendConfigText(std::string_view text, SdkConfig* config) {
  ConfigLines lines(text);
  ConfigLine line;
  for (size_t kept = 0; kept < kMaxConfigLines && lines.Next(&line); ++kept) {
    if (line.opens_section) {
      continue;
    }
    if (line.section == ConfigSection::kSettings) {
      AppendSetting(line.text, &config->settings);
    } else if (line.section == ConfigSection::kModels) {
      AppendModel(line.text, &config->models);
    }
  }
}

}  // namespace vexo
