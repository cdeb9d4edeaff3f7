#include "virtual_printer/wire/trace_words.h"

#include "virtual_printer/wire/hex_text.h"

namespace virtual_printer {

std::string Printable(std::string_view text) {
  std::string printable;
  for (const char character : text) {
    if (character >= ' ' && character <= '~') {
      printable += character;
    } else {
      printable += "\\x" + HexText(static_cast<unsigned char>(character), 2);
    }
  }
  return printable;
}

std::string CountOfBytes(std::size_t count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }

std::string LineText(const Command& command) {
  return Printable(command.arguments.empty() ? command.verb : command.verb + ' ' + command.arguments);
}

}  // namespace virtual_printer
