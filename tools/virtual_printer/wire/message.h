#ifndef VIRTUAL_PRINTER_WIRE_MESSAGE_H_
#define VIRTUAL_PRINTER_WIRE_MESSAGE_H_

#include <chrono>
#include <string>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// Bytes for a host, with the words for them: `report 256: task 0007 started`.
struct Message {
  Bytes bytes;
  std::string text;
  std::chrono::milliseconds pause{0};  // Before it leaves.
};

// What came of something received: how it reads, and the answer, if there is one.
struct Reaction {
  std::string received;
  Message answer = {};
};

// Something that crossed the wire of one connection, or a note on what happened to it.
struct WireEvent {
  enum class Direction { kReceived, kSent, kNote };

  int connection = 0;
  Direction direction = Direction::kReceived;
  Message message;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_MESSAGE_H_
