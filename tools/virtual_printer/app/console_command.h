#ifndef VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_
#define VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace virtual_printer {

// A command typed at the printer's console.
struct ConsoleCommand {
  enum class Kind { kStart, kEnd, kState, kGarbage, kSplit, kSilent, kStatus, kDrop, kHelp, kQuit };

  Kind kind = Kind::kHelp;
  std::uint32_t number = 0;            // Task number, number of bytes, or status.
  std::optional<std::uint32_t> value;  // For kEnd: reported in place of the printer's status.
  bool on = false;                     // For kSplit and kSilent.
};

// Returns nothing for a blank line, and for an invalid one, which sets *error.
std::optional<ConsoleCommand> ParseConsoleLine(std::string_view line, std::string* error);

// All commands, one a line.
std::string ConsoleHelp();

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_
