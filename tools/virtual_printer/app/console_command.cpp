#include "virtual_printer/app/console_command.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "virtual_printer/model/task_number.h"

namespace virtual_printer {
namespace {

using Words = std::vector<std::string_view>;

constexpr std::uint32_t kMaxGarbage = 65536;
constexpr std::uint32_t kUsualGarbage = 16;
constexpr std::uint32_t kAnyNumber = std::numeric_limits<std::uint32_t>::max();

Words SplitWords(std::string_view line) {
  constexpr std::string_view kBlanks = " \t\r";
  Words words;
  std::size_t begin = line.find_first_not_of(kBlanks);
  while (begin != std::string_view::npos) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    words.push_back(line.substr(begin, end - begin));
    begin = line.find_first_not_of(kBlanks, end);
  }
  return words;
}

// A decimal number or, behind 0x, a hexadecimal one.
std::optional<std::uint32_t> ParseNumber(std::string_view text, std::uint32_t max) {
  const bool hexadecimal = text.substr(0, 2) == "0x";
  const std::string digits(hexadecimal ? text.substr(2) : text);
  const char* allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  constexpr std::size_t kMostDigits = 10;
  if (digits.empty() || digits.size() > kMostDigits || digits.find_first_not_of(allowed) != std::string::npos) {
    return std::nullopt;
  }
  const std::uint64_t number = std::stoull(digits, nullptr, hexadecimal ? 16 : 10);
  return number <= max ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
}

// The arguments of a command; each of these gives false when it cannot take them.

bool TakeNothing(const Words& arguments, ConsoleCommand&) { return arguments.empty(); }

bool TakeNumber(const Words& arguments, std::uint32_t max, ConsoleCommand& command) {
  const auto number = arguments.size() == 1 ? ParseNumber(arguments[0], max) : std::nullopt;
  command.number = number.value_or(0);
  return number.has_value();
}

bool TakeTask(const Words& arguments, ConsoleCommand& command) { return TakeNumber(arguments, kMaxTask, command); }

bool TakeStatus(const Words& arguments, ConsoleCommand& command) { return TakeNumber(arguments, kAnyNumber, command); }

bool TakeTaskAndValue(const Words& arguments, ConsoleCommand& command) {
  if (arguments.size() < 2) {
    return TakeTask(arguments, command);
  }
  command.value = ParseNumber(arguments[1], kAnyNumber);
  return arguments.size() == 2 && command.value && TakeTask({arguments[0]}, command);
}

bool TakeCount(const Words& arguments, ConsoleCommand& command) {
  command.number = kUsualGarbage;
  return arguments.empty() || TakeNumber(arguments, kMaxGarbage, command);
}

bool TakeSwitch(const Words& arguments, ConsoleCommand& command) {
  command.on = arguments == Words{"on"};
  return command.on || arguments == Words{"off"};
}

struct Form {
  std::string_view word;
  std::string_view arguments;
  std::string_view meaning;
  ConsoleCommand::Kind kind;
  bool (*take_arguments)(const Words& arguments, ConsoleCommand& command);
};

constexpr Form kForms[] = {
    {"start", "N", "report the start of job N to all hosts", ConsoleCommand::Kind::kStart, TakeTask},
    {"end", "N [VALUE]", "report its end", ConsoleCommand::Kind::kEnd, TakeTaskAndValue},
    {"state", "N", "report another state of it", ConsoleCommand::Kind::kState, TakeTask},
    {"status", "VALUE", "change the printer's status", ConsoleCommand::Kind::kStatus, TakeStatus},
    {"garbage", "[BYTES]", "send noise", ConsoleCommand::Kind::kGarbage, TakeCount},
    {"split", "on|off", "send single bytes", ConsoleCommand::Kind::kSplit, TakeSwitch},
    {"silent", "on|off", "send nothing", ConsoleCommand::Kind::kSilent, TakeSwitch},
    {"drop", "", "end all connections", ConsoleCommand::Kind::kDrop, TakeNothing},
    {"help", "", "show this", ConsoleCommand::Kind::kHelp, TakeNothing},
    {"quit", "", "switch the printer off", ConsoleCommand::Kind::kQuit, TakeNothing},
};

std::string Usage(const Form& form) {
  std::string usage(form.word);
  return form.arguments.empty() ? usage : usage.append(" ").append(form.arguments);
}

}  // namespace

std::optional<ConsoleCommand> ParseConsoleLine(std::string_view line, std::string* complaint) {
  Words words = SplitWords(line);
  if (words.empty()) {
    return std::nullopt;
  }
  for (const Form& form : kForms) {
    if (form.word == words.front()) {
      ConsoleCommand command;
      command.kind = form.kind;
      words.erase(words.begin());
      if (form.take_arguments(words, command)) {
        return command;
      }
      *complaint = "usage: " + Usage(form);
      return std::nullopt;
    }
  }
  *complaint = "unknown command; help shows all";
  return std::nullopt;
}

std::string ConsoleHelp() {
  constexpr std::size_t kUsageWidth = 18;
  std::string help;
  for (const Form& form : kForms) {
    std::string usage = Usage(form);
    usage.resize(kUsageWidth, ' ');
    help.append(usage).append(form.meaning).append("\n");
  }
  return help;
}

}  // namespace virtual_printer
