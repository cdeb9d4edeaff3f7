#ifndef VIRTUAL_PRINTER_SESSION_H_
#define VIRTUAL_PRINTER_SESSION_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "virtual_printer/command_parser.h"
#include "virtual_printer/job_control.h"
#include "virtual_printer/key_settings.h"
#include "virtual_printer/message.h"
#include "virtual_printer/printer_state.h"

namespace virtual_printer {

// The printer at its end of one connection: understands the host's bytes and carries out what they ask.
class Session {
 public:
  // The state must outlive the session.
  Session(int connection, PrinterState& state) : state_(state), settings_(state), jobs_(connection, state) {}

  std::vector<Frame> Parse(const std::uint8_t* data, std::size_t size) { return parser_.Feed(data, size); }
  std::vector<Frame> ParseEnd() { return parser_.Finish(); }
  std::size_t PendingBytes() const { return parser_.PendingBytes(); }

  Reaction ReactTo(const Frame& frame, Time now);

  JobControl& Jobs() { return jobs_; }
  const JobControl& Jobs() const { return jobs_; }

 private:
  Reaction Execute(const Command& command, Time now);

  PrinterState& state_;
  CommandParser parser_;
  KeySettings settings_;
  JobControl jobs_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_SESSION_H_
