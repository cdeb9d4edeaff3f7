#ifndef VIRTUAL_PRINTER_WIRE_FAULTS_H_
#define VIRTUAL_PRINTER_WIRE_FAULTS_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

constexpr std::chrono::milliseconds kDefaultSplitPause{5};

// How a printer misbehaves on request, so that a host can be tried against it. The default is a printer without fault.
struct Faults {
  bool silent = false;                                   // Answers nothing.
  std::chrono::milliseconds delay{0};                    // Works this long on each answer.
  std::optional<std::chrono::milliseconds> split_pause;  // Sends single bytes, this far apart.
  std::optional<std::size_t> drop_after;                 // Drops a connection that brought this many bytes.
};

// A part of an answer, sent after a pause that begins when everything before it has been sent.
struct AnswerPiece {
  std::chrono::milliseconds pause{0};
  Bytes bytes;
};

// How an answer leaves a printer with these faults; nothing when it never does.
std::vector<AnswerPiece> PlanAnswer(const Faults& faults, const Bytes& answer);

// Bytes that mean nothing to any host, as an unsound line brings them; always the same ones.
Bytes Garbage(std::size_t size);

// Counts what a connection brings until the connection is to be dropped.
class ReceiveLimit {
 public:
  explicit ReceiveLimit(const Faults& faults) : remaining_(faults.drop_after) {}

  // How many of the bytes that have arrived still count; the rest came too late.
  std::size_t Admit(std::size_t arrived);

  bool Reached() const { return remaining_ == std::size_t{0}; }

 private:
  std::optional<std::size_t> remaining_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_FAULTS_H_
