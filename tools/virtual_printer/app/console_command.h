#ifndef VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_
#define VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace virtual_printer {

// What somebody at the printer's console asks for.
struct ConsoleCommand {
  enum class Kind { kStart, kEnd, kState, kGarbage, kSplit, kSilent, kStatus, kDrop, kHelp, kQuit };

  Kind kind = Kind::kHelp;
  std::uint32_t number = 0;            // Task number, count of bytes, or status.
  std::optional<std::uint32_t> value;  // Of an end; the printer's status when it is not given.
  bool on = false;                     // Of a switch.
};

// Reads a line. Gives nothing for a blank one, and for one that cannot be understood, which it then complains about.
std::optional<ConsoleCommand> ParseConsoleLine(std::string_view line, std::string* complaint);

// All commands, one a line.
std::string ConsoleHelp();

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_CONSOLE_COMMAND_H_
