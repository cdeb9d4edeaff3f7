#include <windows.h>

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/built_in_models.h"
#include "config/config_lines.h"
#include "config/config_tables.h"
#include "config/stored_alphabet.h"
#include "vexo/error.h"
#include "vexoctl/commands.h"
#include "vexoctl/config_check.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"
#include "vexoctl/job_file.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

// Where the library looks for its configuration: in a file of this name beside itself.
constexpr char kDefaultOutput[] = "sdkconfig";

std::string ReadWhole(JobFile& file) {
  std::string content;
  for (std::vector<uint8_t> piece = file.Read(); !piece.empty(); piece = file.Read()) {
    content.append(piece.begin(), piece.end());
  }
  return content;
}

std::string ReadStored(JobFile& file) {
  std::string text = ReadWhole(file);
  vexo::DecodeConfigText(&text);
  return text;
}

// A file that could not be written to its end is removed: half a configuration is another one.
void WriteWhole(const std::string& name, std::string_view content) {
  const std::string action = "cannot write " + Utf8FromAnsi(name);
  const HANDLE file =
      CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    throw Failure(action, static_cast<int32_t>(GetLastError()));
  }
  DWORD written = 0;
  const bool complete = WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr) &&
                        written == content.size();
  const DWORD error = complete ? 0 : GetLastError();
  CloseHandle(file);
  if (!complete) {
    DeleteFileA(name.c_str());
    throw Failure(action, error != 0 ? static_cast<int32_t>(error) : ERROR_DISK_FULL);
  }
}

void RequireSound(std::string_view text, const std::string& name, const Settings& settings) {
  const std::vector<WrongLine> wrong = CheckConfigText(text);
  for (const WrongLine& line : wrong) {
    PrintNote("line " + std::to_string(line.row) + ": " + Utf8FromPrinter(line.reason), settings);
  }
  if (!wrong.empty()) {
    const std::string lines = wrong.size() == 1 ? "1 wrong line" : std::to_string(wrong.size()) + " wrong lines";
    throw Failure(lines + " in " + name, VEXO_ERROR_CONFIG_FILE);
  }
}

// As the library has it once it has read the file, but for its own models.
vexo::SdkConfig ReadTables(std::string_view text) {
  vexo::SdkConfig config;
  config.models.assign(vexo::kBuiltInModels.begin(), vexo::kBuiltInModels.end());
  vexo::AppendConfigText(text, &config);
  config.models.erase(config.models.begin(), config.models.begin() + vexo::kBuiltInModels.size());
  return config;
}

void Encode(const std::string& name, const std::string& output, const Settings& settings) {
  JobFile file(name);  // Stays open to the end, so that it cannot be its own output.
  std::string text = ReadWhole(file);
  RequireSound(text, file.name(), settings);
  const vexo::SdkConfig config = ReadTables(text);
  vexo::EncodeConfigText(&text);
  WriteWhole(output, text);
  const std::string output_name = Utf8FromAnsi(output);
  PrintResult({output_name + ": " + std::to_string(config.settings.size()) + " settings, " +
                   std::to_string(config.models.size()) + " models, " + std::to_string(text.size()) + " bytes\n",
               {{"file", output_name},
                {"settings", config.settings.size()},
                {"models", config.models.size()},
                {"bytes", text.size()}}},
              settings);
}

void Decode(const std::string& name, const Settings& settings) {
  JobFile file(name);
  const std::string text = ReadStored(file);
  auto lines = nlohmann::ordered_json::array();
  vexo::ConfigLines all(text);
  for (vexo::ConfigLine line; all.Next(&line);) {
    lines.push_back({{"line", line.row}, {"text", Utf8FromPrinter(line.text)}});
  }
  PrintResult({text, {{"lines", lines}}}, settings);
}

// In as few digits as tell it from all others.
std::string FactorText(float factor) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, factor).ptr;
  return {text, end};
}

void AddModel(const vexo::ModelRecord& model, Result* result) {
  auto texts = nlohmann::ordered_json::array();
  result->text += "model: " + std::to_string(model.number);
  for (const vexo::ConfigText& text : model.texts) {
    texts.push_back(Utf8FromPrinter(vexo::ViewText(text)));
    result->text += "," + texts.back().get<std::string>();
  }
  for (const int32_t value : model.values) {
    result->text += "," + std::to_string(value);
  }
  const std::string factor = FactorText(model.factor);
  result->text += "," + factor + "\n";
  result->json["models"].push_back(
      {{"number", model.number}, {"texts", texts}, {"values", model.values}, {"factor", std::stod(factor)}});
}

// Also of a file with wrong lines, before they are named: this is what the library makes of them.
void Show(const std::string& name, const Settings& settings) {
  JobFile file(name);
  const std::string text = ReadStored(file);
  const vexo::SdkConfig config = ReadTables(text);
  Result result = {"", {{"settings", nlohmann::ordered_json::array()}, {"models", nlohmann::ordered_json::array()}}};
  for (const vexo::Setting& setting : config.settings) {
    const std::string key = Utf8FromPrinter(vexo::ViewText(setting.key));
    const std::string value = Utf8FromPrinter(vexo::ViewText(setting.value));
    result.text += "setting: " + key + "=" + value + "\n";
    result.json["settings"].push_back({{"key", key}, {"value", value}});
  }
  for (const vexo::ModelRecord& model : config.models) {
    AddModel(model, &result);
  }
  PrintResult(result, settings);
  RequireSound(text, file.name(), settings);
}

CLI::Option* AddFile(CLI::App* command, const char* description) {
  return command->add_option("FILE")->required()->description(description);
}

void AddEncode(CLI::App* config, const Settings& settings) {
  CLI::App* const encode = config->add_subcommand("encode", "Make a configuration file from a text");
  CLI::Option* const file = AddFile(encode, "File with the text; - for the input");
  CLI::Option* const output = encode->add_option("--output")->type_name("FILE");
  output->description(std::string("File to write; default: ") + kDefaultOutput);
  encode->footer(
      "A text with wrong lines is refused, and each of them is named.\n"
      "\n"
      "[settings]                     first section: key=value, one word each\n"
      "language=en\n"
      "[models]                       second section: number, text, name, two texts,\n"
      "460,receipt,KM460,80 mm,,0,0,0,0,1.0      four whole numbers, a number\n"
      "\n"
      "Examples:\n"
      "  vexoctl config encode models.txt\n"
      "  vexoctl config encode models.txt --output C:\\till\\sdkconfig");
  encode->callback([file, output, &settings] {
    Encode(file->as<std::string>(), output->count() > 0 ? output->as<std::string>() : kDefaultOutput, settings);
  });
}

void AddDecode(CLI::App* config, const Settings& settings) {
  CLI::App* const decode = config->add_subcommand("decode", "Print the text that a configuration file was made from");
  CLI::Option* const file = AddFile(decode, "Configuration file; - for the input");
  decode->footer(
      "Examples:\n"
      "  vexoctl config decode sdkconfig > models.txt");
  decode->callback([file, &settings] { Decode(file->as<std::string>(), settings); });
}

void AddShow(CLI::App* config, const Settings& settings) {
  CLI::App* const show = config->add_subcommand("show", "Print what the library reads from a configuration file");
  CLI::Option* const file = AddFile(show, "Configuration file; - for the input");
  show->footer(
      "It is a failure when the file has wrong lines: each of them is named, and why. The\n"
      "library does not mind, but will not know what was meant.\n"
      "Examples:\n"
      "  vexoctl config show sdkconfig\n"
      "  vexoctl --json config show sdkconfig");
  show->callback([file, &settings] { Show(file->as<std::string>(), settings); });
}

}  // namespace

void AddConfigCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const config = tool.add_subcommand("config", "Make and check the library's configuration file, sdkconfig");
  config->require_subcommand(1);
  config->footer(
      "The library reads sdkconfig from its own folder, where it stands in an alphabet of its\n"
      "own. No printer is contacted.\n"
      "Examples:\n"
      "  vexoctl config encode models.txt\n"
      "  vexoctl config show sdkconfig");
  AddEncode(config, settings);
  AddDecode(config, settings);
  AddShow(config, settings);
}

}  // namespace vexoctl
