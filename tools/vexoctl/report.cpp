#include "vexoctl/report.h"

#include "vexoctl/console_text.h"
#include "vexoctl/error_words.h"

namespace vexoctl {

void PrintResult(const Result& result, const Settings& settings) {
  WriteOutput(settings.json ? result.json.dump() + "\n" : result.text);
}

void PrintNote(std::string_view note, const Settings& settings) {
  WriteError((settings.json ? nlohmann::ordered_json{{"note", note}}.dump() : "vexoctl: " + std::string(note)) + "\n");
}

void PrintFailure(const Failure& failure, const Settings& settings) {
  const std::string words = ErrorWords(failure.code());
  if (settings.json) {
    const nlohmann::ordered_json error = {{"code", failure.code()}, {"message", words}, {"action", failure.what()}};
    WriteError(nlohmann::ordered_json{{"error", error}}.dump() + "\n");
  } else {
    WriteError(std::string("vexoctl: ") + failure.what() + ": " + std::to_string(failure.code()) + " " + words + "\n");
  }
}

}  // namespace vexoctl
