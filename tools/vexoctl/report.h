#ifndef VEXOCTL_REPORT_H_
#define VEXOCTL_REPORT_H_

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "vexoctl/failure.h"
#include "vexoctl/settings.h"

namespace vexoctl {

// What a command found out, in the two forms a user may ask for; both in UTF-8.
struct Result {
  std::string text;             // Lines for a reader, each with its "\n".
  nlohmann::ordered_json json;  // One object for a program.
};

// Prints a result on the standard output stream.
void PrintResult(const Result& result, const Settings& settings);

// Prints what a user who waits wants to know, and a program may ignore, on the standard error stream, in one line.
void PrintNote(std::string_view note, const Settings& settings);

// Prints a failure on the standard error stream, in one line.
void PrintFailure(const Failure& failure, const Settings& settings);

}  // namespace vexoctl

#endif  // VEXOCTL_REPORT_H_
