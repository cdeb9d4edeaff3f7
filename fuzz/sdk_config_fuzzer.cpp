// For any configuration file, the tables must stay within their bounds and equal those of a simple reference parser,
// and an encoded text must decode to itself.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "config/config_lines.h"
#include "config/config_tables.h"
#include "config/stored_alphabet.h"
#include "require.h"

namespace {

using Strings = std::vector<std::string>;

Strings Split(const std::string& text, const std::string& separators) {
  Strings parts(1);
  for (const char c : text) {
    if (separators.find(c) != std::string::npos) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// The lines of each section without its heading. Lines before the first heading are dropped.
std::vector<Strings> Sections(const std::string& text) {
  std::vector<Strings> sections;
  size_t kept = 0;
  for (const std::string& whole : Split(text, "\r\n")) {
    const std::string line = whole.substr(0, whole.find('\0'));
    if (line.empty() || ++kept > 770) {
      continue;
    }
    if (line.find('[') != std::string::npos) {
      sections.emplace_back();
    } else if (!sections.empty()) {
      sections.back().push_back(line);
    }
  }
  sections.resize(std::max<size_t>(sections.size(), 2));
  return sections;
}

std::string Fitting(const std::string& text) { return text.size() <= 64 ? text : ""; }

std::string FirstWord(const std::string& text) {
  std::string word;
  std::istringstream(text) >> word;
  return word;
}

std::string View(const vexo::ConfigText& text) { return std::string(vexo::ViewText(text)); }

// 0 if the number is out of range. The library skips the same blanks as the C library.
int32_t ReferenceNumber(const std::string& field) {
  const int64_t number = std::strtoll(field.c_str(), nullptr, 10);
  return number >= INT32_MIN && number <= INT32_MAX ? static_cast<int32_t>(number) : 0;
}

void RequireSettings(const Strings& lines, const std::vector<vexo::Setting>& settings) {
  size_t next = 0;
  for (const std::string& line : lines) {
    const size_t sign = line.find('=');
    if (sign != std::string::npos && next < 128) {
      Require(next < settings.size());
      Require(View(settings[next].key) == Fitting(FirstWord(line.substr(0, sign))));
      Require(View(settings[next].value) == Fitting(FirstWord(line.substr(sign + 1))));
      ++next;
    }
  }
  Require(next == settings.size());
}

void RequireModels(const Strings& lines, const std::vector<vexo::ModelRecord>& models) {
  Require(models.size() == std::min<size_t>(lines.size(), 512));
  for (size_t i = 0; i < models.size(); ++i) {
    Strings fields = Split(lines[i], ",");
    fields.resize(std::max<size_t>(fields.size(), 10));
    Require(models[i].number == ReferenceNumber(fields[0]));
    for (size_t field = 0; field < 4; ++field) {
      Require(View(models[i].texts[field]) == Fitting(fields[1 + field]));
      Require(models[i].values[field] == ReferenceNumber(fields[5 + field]));
    }
  }
}

void RequireFirstMatches(const vexo::SdkConfig& config) {
  for (const vexo::ModelRecord& model : config.models) {
    const vexo::ModelRecord* const by_number = config.FindModel(model.number);
    const vexo::ModelRecord* const by_name = config.FindModelByName(model.name());
    Require(by_number <= &model && by_number->number == model.number);
    Require(by_name <= &model && by_name->name() == model.name());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  // Exact size, so that the sanitizer detects any access beyond the end.
  const auto copy = std::make_unique<char[]>(size);
  std::copy(text.begin(), text.end(), copy.get());
  vexo::SdkConfig config;
  vexo::AppendConfigText({copy.get(), size}, &config);
  const std::vector<Strings> sections = Sections(text);
  RequireSettings(sections[0], config.settings);
  RequireModels(sections[1], config.models);
  RequireFirstMatches(config);

  std::string stored = text;
  vexo::EncodeConfigText(&stored);
  vexo::DecodeConfigText(&stored);
  Require(stored == text);
  return 0;
}
