#ifndef VIRTUAL_PRINTER_WIRE_TRACE_H_
#define VIRTUAL_PRINTER_WIRE_TRACE_H_

#include <chrono>
#include <ostream>
#include <string_view>

#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// Writes what crosses the wire, each entry at once, so that a reader follows along and nothing is lost when the printer
// is ended. Times count from the making of the trace.
class Trace {
 public:
  // A null stream makes a trace that writes nothing; any other must outlive the trace.
  explicit Trace(std::ostream* out) : out_(out), start_(std::chrono::steady_clock::now()) {}

  void Event(const WireEvent& event);
  void Note(int connection, std::string_view text);

  // The number of the next connection, whichever printer it comes to.
  int NumberConnection() { return ++connections_; }

 private:
  std::chrono::milliseconds Now() const;

  std::ostream* out_;
  std::chrono::steady_clock::time_point start_;
  int connections_ = 0;  // So far.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_TRACE_H_
