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
#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/support/config_check.h"
#include "vexoctl/support/input_file.h"

namespace vexoctl {
namespace {

// The name of the file that the library reads, in its own folder.
constexpr char kConfigFileName[] = "sdkconfig";

std::string ReadDecoded(InputStream& file) {
  std::string text = file.ReadAll();
  vexo::DecodeConfigText(&text);
  return text;
}

// Removes the file again if it cannot be written completely: the library would read the half of a configuration.
void WriteFileOrNothing(const std::string& name, std::string_view content) {
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

// Prints a note about each wrong line, and throws a Failure if there is one.
void RequireCorrectLines(std::string_view text, const std::string& name, const Options& options) {
  const std::vector<WrongLine> wrong = CheckConfigText(text);
  for (const WrongLine& line : wrong) {
    PrintNote("line " + std::to_string(line.row) + ": " + Utf8FromPrinter(line.reason), options);
  }
  if (!wrong.empty()) {
    const std::string lines = wrong.size() == 1 ? "1 wrong line" : std::to_string(wrong.size()) + " wrong lines";
    throw Failure(lines + " in " + name, VEXO_ERROR_CONFIG_FILE);
  }
}

// What the library reads from the file, without its built-in models.
vexo::SdkConfig ReadTables(std::string_view text) {
  vexo::SdkConfig config;
  config.models.assign(vexo::kBuiltInModels.begin(), vexo::kBuiltInModels.end());
  vexo::AppendConfigText(text, &config);
  config.models.erase(config.models.begin(), config.models.begin() + vexo::kBuiltInModels.size());
  return config;
}

void EncodeConfig(const std::string& name, const std::string& output, const Options& options) {
  InputStream file(name);  // Stays open, so that it cannot be its own output.
  std::string text = file.ReadAll();
  RequireCorrectLines(text, file.name(), options);
  const vexo::SdkConfig config = ReadTables(text);
  vexo::EncodeConfigText(&text);
  WriteFileOrNothing(output, text);
  const std::string output_name = Utf8FromAnsi(output);
  PrintResult({output_name + ": " + std::to_string(config.settings.size()) + " settings, " +
                   std::to_string(config.models.size()) + " models, " + std::to_string(text.size()) + " bytes\n",
               {{"file", output_name},
                {"settings", config.settings.size()},
                {"models", config.models.size()},
                {"bytes", text.size()}}},
              options);
}

void DecodeConfig(const std::string& name, const Options& options) {
  InputStream file(name);
  const std::string text = ReadDecoded(file);
  auto lines = nlohmann::ordered_json::array();
  vexo::ConfigLines all(text);
  for (vexo::ConfigLine line; all.Next(&line);) {
    lines.push_back({{"line", line.row}, {"text", Utf8FromPrinter(line.text)}});
  }
  PrintResult({text, {{"lines", lines}}}, options);
}

// In the fewest digits that identify the value.
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

Result DescribeConfig(const vexo::SdkConfig& config) {
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
  return result;
}

// Shows a file with wrong lines, too, and then reports these.
void ShowConfig(const std::string& name, const Options& options) {
  InputStream file(name);
  const std::string text = ReadDecoded(file);
  PrintResult(DescribeConfig(ReadTables(text)), options);
  RequireCorrectLines(text, file.name(), options);
}

CLI::Option* AddConfigFile(CLI::App* command, const char* description) {
  return command->add_option("FILE")->required()->description(description);
}

void AddConfigEncode(CLI::App* config, const Options& options) {
  CLI::App* const encode = config->add_subcommand("encode", "Encode a text as a configuration file");
  CLI::Option* const file = AddConfigFile(encode, "File with the text; - for the standard input");
  CLI::Option* const output = encode->add_option("--output")->type_name("FILE");
  output->description(std::string("File to write; default: ") + kConfigFileName);
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
  encode->callback([file, output, &options] {
    EncodeConfig(file->as<std::string>(), output->count() > 0 ? output->as<std::string>() : kConfigFileName, options);
  });
}

void AddConfigDecode(CLI::App* config, const Options& options) {
  CLI::App* const decode = config->add_subcommand("decode", "Decode a configuration file to its text");
  CLI::Option* const file = AddConfigFile(decode, "Configuration file; - for the standard input");
  decode->footer(
      "Examples:\n"
      "  vexoctl config decode sdkconfig > models.txt");
  decode->callback([file, &options] { DecodeConfig(file->as<std::string>(), options); });
}

void AddConfigShow(CLI::App* config, const Options& options) {
  CLI::App* const show = config->add_subcommand("show", "Print what the library reads from a configuration file");
  CLI::Option* const file = AddConfigFile(show, "Configuration file; - for the standard input");
  show->footer(
      "It is a failure if the file has wrong lines, which are listed with the reasons. The library\n"
      "itself accepts them, but ignores them or reads them differently.\n"
      "Examples:\n"
      "  vexoctl config show sdkconfig\n"
      "  vexoctl --json config show sdkconfig");
  show->callback([file, &options] { ShowConfig(file->as<std::string>(), options); });
}

}  // namespace

void AddConfigCommand(CLI::App& tool, const Options& options) {
  CLI::App* const config = tool.add_subcommand("config", "Make and check the library's configuration file, sdkconfig");
  config->require_subcommand(1);
  config->footer(
      "The library reads sdkconfig from its own folder. The file is encoded. No printer is\n"
      "contacted.\n"
      "Examples:\n"
      "  vexoctl config encode models.txt\n"
      "  vexoctl config show sdkconfig");
  AddConfigEncode(config, options);
  AddConfigDecode(config, options);
  AddConfigShow(config, options);
}

}  // namespace vexoctl
