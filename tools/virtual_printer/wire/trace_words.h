#ifndef VIRTUAL_PRINTER_WIRE_TRACE_WORDS_H_
#define VIRTUAL_PRINTER_WIRE_TRACE_WORDS_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {

// `1 byte`, `2 bytes`.
std::string CountOfBytes(std::size_t count);

// A host may send any byte; a trace that is read on a terminal must not.
std::string Printable(std::string_view text);

// The line of a V1 command, in printable characters.
std::string LineText(const Command& command);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_TRACE_WORDS_H_
