#ifndef VIRTUAL_PRINTER_WIRE_TRACE_H_
#define VIRTUAL_PRINTER_WIRE_TRACE_H_

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>

#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// In place of a connection number: datagrams belong to no connection.
constexpr int kDatagrams = 0;

// One entry of the trace: time in seconds, connection, direction, and the bytes in rows of sixteen with the text beside
// the first row. Ends with a line end.
//
//     0.002 #1 -> 1B 1C 26 20 56 31 20 67 65 74 6B 65 79 0D 0A 01  getkey key 0x00CC
//                 CC 00 02
std::string FormatTraceEntry(std::chrono::milliseconds time, const WireEvent& event);

// Writes what is sent and received. Each entry is flushed, so that a reader can follow and nothing is lost when the
// printer is killed. Times count from the construction of the trace.
class Trace {
 public:
  // With a null stream nothing is written. The stream must outlive the trace.
  explicit Trace(std::ostream* out) : out_(out), start_(std::chrono::steady_clock::now()) {}

  void Write(const WireEvent& event);

  // Writes an entry without bytes: `    0.000 #1 connected from 127.0.0.1:50412`.
  void Note(int connection, std::string text);

  // Returns the number of the next connection. Connections are numbered across all printers.
  int NumberConnection() { return ++connections_; }

 private:
  std::ostream* out_;
  std::chrono::steady_clock::time_point start_;
  int connections_ = 0;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_TRACE_H_
