#ifndef VIRTUAL_PRINTER_WIRE_TRACE_FORMAT_H_
#define VIRTUAL_PRINTER_WIRE_TRACE_FORMAT_H_

#include <chrono>
#include <string>
#include <string_view>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// Stands for a connection where something came or left without one.
constexpr int kDatagrams = 0;

// One entry of the trace: time in seconds, what happened on which connection, and, when bytes were transferred, the
// bytes in rows of sixteen with the words beside the first row. Ends with a line end.
//
//     0.002 #1 -> 1B 1C 26 20 56 31 20 67 65 74 6B 65 79 0D 0A 01  getkey key 0x00CC
//                 CC 00 02
std::string FormatTraceEntry(std::chrono::milliseconds time, int connection, std::string_view arrow, const Bytes& bytes,
                             std::string_view text);

// An entry without bytes: `    0.000 #1 connected from 127.0.0.1:50412`.
std::string FormatTraceNote(std::chrono::milliseconds time, int connection, std::string_view text);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_TRACE_FORMAT_H_
