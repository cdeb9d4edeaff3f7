#ifndef VIRTUAL_PRINTER_MODEL_PRINTER_CONVERSATION_H_
#define VIRTUAL_PRINTER_MODEL_PRINTER_CONVERSATION_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "virtual_printer/downloads/download_control.h"
#include "virtual_printer/model/job_control.h"
#include "virtual_printer/model/key_settings.h"
#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {

// The printer's side of one connection: parses what the host sends and carries it out.
class PrinterConversation {
 public:
  // Called for each exchange, in order.
  using Sink = std::function<void(Exchange)>;

  // The state must outlive the conversation.
  PrinterConversation(int connection, PrinterState& state)
      : state_(state), settings_(state), jobs_(connection, state), downloads_(state.downloads) {}

  void Receive(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink);

  // To be called when the deadline has come.
  void Advance(Time now, const Sink& sink);
  std::optional<Time> NextDeadline() const;

  // The host has stopped sending.
  void Finish(Time now, const Sink& sink);

  // The printer drops the connection. All further input is ignored.
  void Drop() { dropped_ = true; }

  std::size_t PendingBytes() const { return parser_.PendingBytes() + held_.size(); }

  JobControl& Jobs() { return jobs_; }
  const JobControl& Jobs() const { return jobs_; }

 private:
  ReceiveResult ReceiveDownload(const std::uint8_t* data, std::size_t size, const Sink& sink);
  std::size_t ReceiveCommands(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink);
  void Emit(Exchange exchange, const Sink& sink);
  Exchange CarryOut(const Frame& frame, Time now);
  Exchange Execute(const Command& command, Time now);

  PrinterState& state_;
  CommandParser parser_;
  KeySettings settings_;
  JobControl jobs_;
  DownloadControl downloads_;
  Bytes held_;          // An incomplete unit of a download...
  Time last_received_;  // ...and when its last byte arrived.
  bool dropped_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINTER_CONVERSATION_H_
