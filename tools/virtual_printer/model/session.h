#ifndef VIRTUAL_PRINTER_MODEL_SESSION_H_
#define VIRTUAL_PRINTER_MODEL_SESSION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_control.h"
#include "virtual_printer/model/job_control.h"
#include "virtual_printer/model/key_settings.h"
#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// The printer at its end of one connection: understands the host's bytes and carries out what they ask.
class Session {
 public:
  using Sink = std::function<void(Exchange)>;

  // The state must outlive the session.
  Session(int connection, PrinterState& state)
      : state_(state), settings_(state), jobs_(connection, state), downloads_(state.downloads) {}

  // Bytes have arrived. What comes of them goes to the sink, one after the other.
  void Receive(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink);

  // Lets time pass; to be called when the deadline has come.
  void Advance(Time now, const Sink& sink);
  std::optional<Time> NextDeadline() const;

  // The host sends nothing any more.
  void Finish(Time now, const Sink& sink);

  // The printer drops the connection: what still comes is not looked at.
  void Drop() { dropped_ = true; }

  std::size_t PendingBytes() const { return parser_.PendingBytes() + held_.size(); }

  JobControl& Jobs() { return jobs_; }
  const JobControl& Jobs() const { return jobs_; }

 private:
  Intake TakeDownload(const std::uint8_t* data, std::size_t size, const Sink& sink);
  std::size_t TakeCommands(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink);
  void Emit(Exchange exchange, const Sink& sink);
  Exchange ReactTo(const Frame& frame, Time now);
  Exchange Execute(const Command& command, Time now);

  PrinterState& state_;
  CommandParser parser_;
  KeySettings settings_;
  JobControl jobs_;
  DownloadControl downloads_;
  Bytes held_;          // An incomplete unit of a download...
  Time last_received_;  // ...and when its last byte came.
  bool dropped_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_SESSION_H_
