// What the tool prints: results on the standard output; notes and failures on the standard error output, a line each.
#ifndef VEXOCTL_CONSOLE_REPORT_H_
#define VEXOCTL_CONSOLE_REPORT_H_

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "vexoctl/console/failure.h"
#include "vexoctl/console/options.h"

namespace vexoctl {

// The result of a command in both forms that a user can choose, in UTF-8.
struct Result {
  std::string text;             // Lines, each with its "\n".
  nlohmann::ordered_json json;  // One object.
};

void PrintResult(const Result& result, const Options& options);

// What a waiting user wants to know and a script can ignore.
void PrintNote(std::string_view note, const Options& options);

void PrintFailure(const Failure& failure, const Options& options);

// The meaning of a result code in the user's language, on one line.
std::string ErrorText(int32_t code);

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_REPORT_H_
