#include "virtual_printer/app/console_command.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "virtual_printer/model/print_jobs.h"

namespace virtual_printer {
namespace {

using Words = std::vector<std::string_view>;

constexpr std::uint32_t kMaxGarbage = 65536;
constexpr std::uint32_t kDefaultGarbage = 16;
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

// Parses a decimal number or, after 0x, a hexadecimal one.
std::optional<std::uint32_t> ParseNumber(std::string_view text, std::uint32_t max) {
  const bool hexadecimal = text.substr(0, 2) == "0x";
  const std::string digits(hexadecimal ? text.substr(2) : text);
  const char* allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  constexpr std::size_t kMaxDigits = 10;
  if (digits.empty() || digits.size() > kMaxDigits || digits.find_first_not_of(allowed) != std::string::npos) {
    return std::nullopt;
  }
  const std::uint64_t number = std::stoull(digits, nullptr, hexadecimal ? 16 : 10);
  return number <= max ? std::optional(static_cast<std::uint32_t>(number)) : std::nullopt;
}

// Each of these parses the arguments of a command and returns false if they are invalid.

bool ParseNothing(const Words& arguments, ConsoleCommand&) { return arguments.empty(); }

bool ParseOnlyNumber(const Words& arguments, std::uint32_t max, ConsoleCommand& command) {
  const auto number = arguments.size() == 1 ? ParseNumber(arguments[0], max) : std::nullopt;
  command.number = number.value_or(0);
  return number.has_value();
}

bool ParseTaskNumber(const Words& arguments, ConsoleCommand& command) {
  return ParseOnlyNumber(arguments, kMaxTask, command);
}

bool ParseStatus(const Words& arguments, ConsoleCommand& command) {
  return ParseOnlyNumber(arguments, kAnyNumber, command);
}

bool ParseTaskAndValue(const Words& arguments, ConsoleCommand& command) {
  if (arguments.size() < 2) {
    return ParseTaskNumber(arguments, command);
  }
  command.value = ParseNumber(arguments[1], kAnyNumber);
  return arguments.size() == 2 && command.value && ParseTaskNumber({arguments[0]}, command);
}

bool ParseCount(const Words& arguments, ConsoleCommand& command) {
  command.number = kDefaultGarbage;
  return arguments.empty() || ParseOnlyNumber(arguments, kMaxGarbage, command);
}

bool ParseSwitch(const Words& arguments, ConsoleCommand& command) {
  command.on = arguments == Words{"on"};
  return command.on || arguments == Words{"off"};
}

struct Syntax {
  std::string_view word;
  std::string_view arguments;
  std::string_view description;
  ConsoleCommand::Kind kind;
  bool (*parse_arguments)(const Words& arguments, ConsoleCommand& command);
};

constexpr Syntax kSyntax[] = {
    {"start", "N", "report the start of job N to all hosts", ConsoleCommand::Kind::kStart, ParseTaskNumber},
    {"end", "N [VALUE]", "report the end of job N", ConsoleCommand::Kind::kEnd, ParseTaskAndValue},
    {"state", "N", "report another state of job N", ConsoleCommand::Kind::kState, ParseTaskNumber},
    {"status", "VALUE", "change the printer's status", ConsoleCommand::Kind::kStatus, ParseStatus},
    {"garbage", "[BYTES]", "send garbage to all hosts", ConsoleCommand::Kind::kGarbage, ParseCount},
    {"split", "on|off", "send answers in single bytes", ConsoleCommand::Kind::kSplit, ParseSwitch},
    {"silent", "on|off", "stop answering", ConsoleCommand::Kind::kSilent, ParseSwitch},
    {"drop", "", "drop all connections", ConsoleCommand::Kind::kDrop, ParseNothing},
    {"help", "", "show this list", ConsoleCommand::Kind::kHelp, ParseNothing},
    {"quit", "", "switch the printer off", ConsoleCommand::Kind::kQuit, ParseNothing},
};

std::string Usage(const Syntax& syntax) {
  std::string usage(syntax.word);
  return syntax.arguments.empty() ? usage : usage.append(" ").append(syntax.arguments);
}

}  // namespace

std::optional<ConsoleCommand> ParseConsoleLine(std::string_view line, std::string* error) {
  Words words = SplitWords(line);
  if (words.empty()) {
    return std::nullopt;
  }
  for (const Syntax& syntax : kSyntax) {
    if (syntax.word == words.front()) {
      ConsoleCommand command;
      command.kind = syntax.kind;
      words.erase(words.begin());
      if (syntax.parse_arguments(words, command)) {
        return command;
      }
      *error = "usage: " + Usage(syntax);
      return std::nullopt;
    }
  }
  *error = "unknown command; help shows all";
  return std::nullopt;
}

std::string ConsoleHelp() {
  constexpr std::size_t kUsageWidth = 18;
  std::string help;
  for (const Syntax& syntax : kSyntax) {
    std::string usage = Usage(syntax);
    usage.resize(kUsageWidth, ' ');
    help.append(usage).append(syntax.description).append("\n");
  }
  return help;
}

}  // namespace virtual_printer
