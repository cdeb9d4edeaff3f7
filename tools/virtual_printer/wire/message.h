#ifndef VIRTUAL_PRINTER_WIRE_MESSAGE_H_
#define VIRTUAL_PRINTER_WIRE_MESSAGE_H_

#include <chrono>
#include <string>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// Bytes and their meaning, for instance `report 256: task 0007 started`.
struct Message {
  Bytes bytes;
  std::string text;
  std::chrono::milliseconds pause{0};  // Before it is sent.
};

// How a command reads in the trace, and the answer to it. The answer has no bytes if there is none.
struct CommandResult {
  std::string description;
  Message answer = {};
};

// Something sent or received on one connection, or a note about the connection.
struct WireEvent {
  enum class Direction { kReceived, kSent, kNote };

  int connection = 0;
  Direction direction = Direction::kReceived;
  Message message;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_MESSAGE_H_
