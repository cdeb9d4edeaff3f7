#ifndef VIRTUAL_PRINTER_PRINTER_MODEL_H_
#define VIRTUAL_PRINTER_PRINTER_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "virtual_printer/bytes.h"
#include "virtual_printer/command_parser.h"
#include "virtual_printer/printer_state.h"

namespace virtual_printer {

// Something that crossed the wire, with the words for it: `setkey key 0x00CC = 576`.
struct WireEvent {
  enum class Direction { kReceived, kSent };

  Direction direction = Direction::kReceived;
  Bytes bytes;
  std::string text;
};

// The printer at its end of one connection: takes the host's bytes, gives the answers. It knows no sockets, threads or
// time, so a test drives it directly. Each connection has a model of its own; all of them work on one PrinterState.
class PrinterModel {
 public:
  // The state must outlive the model.
  explicit PrinterModel(PrinterState& state) : state_(state) {}

  // Takes what has arrived, in pieces of any size. Gives what was understood and what is answered, in order: an answer
  // stands directly behind its command.
  std::vector<WireEvent> Receive(const std::uint8_t* data, std::size_t size);

  // The host has closed the connection. Gives what was still incomplete; nothing is answered any more.
  std::vector<WireEvent> Finish();

  // Bytes of an incomplete command, at most CommandParser::kMaxPending.
  std::size_t PendingBytes() const { return parser_.PendingBytes(); }

 private:
  // What came of a command: how it reads, and the answer, if it has one.
  struct Reaction {
    std::string received;
    Bytes answer = {};
    std::string sent = {};
  };

  std::vector<WireEvent> React(const std::vector<Frame>& frames);
  Reaction ReactTo(const Frame& frame);
  Reaction Execute(const Command& command);

  // The verbs.
  Reaction SetKey(const Command& command);
  Reaction GetKey(const Command& command);
  Reaction Do(const Command& command);

  // The actions of the verb do.
  Reaction SaveParameterZone(const Command& command);

  Reaction RefuseSetting(std::string received);

  PrinterState& state_;
  CommandParser parser_;
  bool setting_refused_ = false;  // Since the last save_param_zone of this connection.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_PRINTER_MODEL_H_
