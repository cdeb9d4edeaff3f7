#include "vexoctl/support/config_check.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <system_error>
#include <utility>

#include "config/built_in_models.h"
#include "config/config_lines.h"
#include "config/config_tables.h"

namespace vexoctl {
namespace {

using vexo::ConfigLine;
using vexo::ConfigSection;

constexpr std::string_view kBlanks = " \t\v\f";
// Fields of a model: the number, four texts, four values and a factor.
constexpr size_t kFirstText = 1;
constexpr size_t kNameField = kFirstText + vexo::ModelRecord::kNameText;
constexpr size_t kFirstValue = 5;
constexpr size_t kFactorField = 9;
constexpr size_t kFieldCount = 10;

std::string_view Trim(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::vector<std::string_view> SplitFields(std::string_view line) {
  std::vector<std::string_view> fields;
  for (size_t comma = line.find(','); comma != std::string_view::npos; comma = line.find(',')) {
    fields.push_back(line.substr(0, comma));
    line.remove_prefix(comma + 1);
  }
  fields.push_back(line);
  return fields;
}

template <typename Number>
bool ReadNumber(std::string_view field, Number* number) {
  std::string_view digits = Trim(field);
  digits.remove_prefix(digits.size() > 1 && digits[0] == '+' && digits[1] != '-' ? 1 : 0);
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), *number);
  return error == std::errc() && end == digits.data() + digits.size();
}

template <typename Number>
bool IsNumber(std::string_view field) {
  Number number = 0;
  return ReadNumber(field, &number);
}

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

std::string FieldName(size_t field) { return "field " + std::to_string(field + 1); }

// Checks a key or a value, which the library reads up to its first blank.
std::string CheckWord(const std::string& name, std::string_view text) {
  if (text.find_first_of(kBlanks) != std::string_view::npos) {
    return "the " + name + " has several words";
  }
  return text.size() > vexo::kConfigTextSize ? "the " + name + " has more than 64 bytes" : "";
}

std::string CheckModelFields(const std::vector<std::string_view>& fields) {
  if (fields.size() != kFieldCount) {
    return "a model has " + std::to_string(kFieldCount) + " fields, not " + std::to_string(fields.size());
  }
  for (size_t field = 0; field < kFieldCount; ++field) {
    const bool is_text = field >= kFirstText && field < kFirstValue;
    if (is_text && fields[field].size() > vexo::kConfigTextSize) {
      return FieldName(field) + " has more than 64 bytes";
    }
    if (field == kFactorField && !IsNumber<float>(fields[field])) {
      return FieldName(field) + " is not a number: " + Quoted(fields[field]);
    }
    if (!is_text && field != kFactorField && !IsNumber<int32_t>(fields[field])) {
      return FieldName(field) + " is not a whole number of 32 bits: " + Quoted(fields[field]);
    }
  }
  return fields[kNameField].empty() ? "the model has no name" : "";
}

class ConfigChecker {
 public:
  ConfigChecker() {
    for (const vexo::ModelRecord& model : vexo::kBuiltInModels) {
      known_models_.emplace(NumberKey(model.number), "built in");
      known_models_.emplace(NameKey(model.name()), "built in");
    }
  }

  void CheckLine(const ConfigLine& line) {
    if (++lines_ == vexo::kMaxConfigLines + 1) {
      Add(line, "the library reads only " + std::to_string(vexo::kMaxConfigLines) + " lines");
    } else if (lines_ <= vexo::kMaxConfigLines) {
      Add(line, line.opens_section ? CheckSection(line) : CheckContent(line));
    }
  }

  std::vector<WrongLine> TakeWrongLines() { return std::move(wrong_); }

 private:
  void Add(const ConfigLine& line, std::string reason) {
    if (!reason.empty()) {
      wrong_.push_back({line.row, std::move(reason)});
    }
  }

  static std::string CheckSection(const ConfigLine& line) {
    if (line.section == ConfigSection::kUnused) {
      return "every '[' opens a section, and the library reads only two";
    }
    const std::string_view name = Trim(line.text);
    return name.front() == '[' && name.back() == ']' ? "" : "every '[' opens a section, and this is no section's name";
  }

  std::string CheckContent(const ConfigLine& line) {
    switch (line.section) {
      case ConfigSection::kNone:
        return "this is before the first section";
      case ConfigSection::kSettings:
        return CheckSetting(line.text);
      case ConfigSection::kModels:
        return CheckModel(line);
      case ConfigSection::kUnused:
        break;  // Its first line was reported.
    }
    return "";
  }

  std::string CheckSetting(std::string_view text) {
    const size_t sign = text.find('=');
    if (sign == std::string_view::npos) {
      return "a setting has the form key=value";
    }
    if (++settings_ > vexo::kMaxSettings) {
      return "the library keeps only " + std::to_string(vexo::kMaxSettings) + " settings";
    }
    const std::string_view key = Trim(text.substr(0, sign));
    if (key.empty()) {
      return "the setting has no key";
    }
    const std::string reason = CheckWord("key", key);
    return reason.empty() ? CheckWord("value", Trim(text.substr(sign + 1))) : reason;
  }

  std::string CheckModel(const ConfigLine& line) {
    if (++models_ > vexo::kMaxModels) {
      return "the library keeps only " + std::to_string(vexo::kMaxModels) + " models, its own included";
    }
    const std::vector<std::string_view> fields = SplitFields(line.text);
    const std::string reason = CheckModelFields(fields);
    return reason.empty() ? CheckUnique(line, fields) : reason;
  }

  static std::string NumberKey(int32_t number) { return "number " + std::to_string(number); }
  static std::string NameKey(std::string_view name) { return "name " + Quoted(name); }

  // Of two models with the same number or name, the library finds only the first.
  std::string CheckUnique(const ConfigLine& line, const std::vector<std::string_view>& fields) {
    int32_t number = 0;
    ReadNumber(fields[0], &number);
    std::string reason;
    for (const std::string& key : {NumberKey(number), NameKey(fields[kNameField])}) {
      const auto [known, is_new] = known_models_.emplace(key, "in line " + std::to_string(line.row));
      if (!is_new && reason.empty()) {
        reason = "a model with the " + key + " is " + known->second + " already";
      }
    }
    return reason;
  }

  size_t lines_ = 0;
  size_t settings_ = 0;
  size_t models_ = vexo::kBuiltInModels.size();
  std::map<std::string, std::string> known_models_;  // Where each number and each name was defined.
  std::vector<WrongLine> wrong_;
};

size_t RowAt(std::string_view text, size_t offset) {
  size_t row = 1;
  for (size_t i = 0; i < offset; ++i) {
    const bool is_pair = text.substr(i, 2) == "\r\n";
    row += text[i] == '\n' || (text[i] == '\r' && !is_pair) ? 1 : 0;
  }
  return row;
}

}  // namespace

std::vector<WrongLine> CheckConfigText(std::string_view text) {
  ConfigChecker checker;
  vexo::ConfigLines lines(text);
  ConfigLine line;
  while (lines.Next(&line)) {
    checker.CheckLine(line);
  }
  std::vector<WrongLine> wrong = checker.TakeWrongLines();
  const size_t zero = text.find('\0');
  if (zero != std::string_view::npos) {
    wrong.push_back({RowAt(text, zero), "a zero byte ends the line"});
  }
  std::stable_sort(wrong.begin(), wrong.end(),
                   [](const auto& left, const auto& right) { return left.row < right.row; });
  return wrong;
}

}  // namespace vexoctl
