#ifndef VIRTUAL_PRINTER_WIRE_CONNECTION_FAULTS_H_
#define VIRTUAL_PRINTER_WIRE_CONNECTION_FAULTS_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

constexpr std::chrono::milliseconds kDefaultSplitPause{5};

// How the printer misbehaves on its connections, on request.
struct ConnectionFaults {
  bool silent = false;                                   // Never answers.
  std::chrono::milliseconds delay{0};                    // Before each answer.
  std::optional<std::chrono::milliseconds> split_pause;  // Sends single bytes, this far apart.
  std::optional<std::size_t> drop_after;                 // Drops a connection after receiving this many bytes.
};

// A part of an answer. The pause begins when everything before it has been sent.
struct AnswerPiece {
  std::chrono::milliseconds pause{0};
  Bytes bytes;
};

// Returns the pieces in which the answer is sent; none if it is not sent at all.
std::vector<AnswerPiece> PlanAnswer(const ConnectionFaults& faults, const Bytes& answer);

// Returns the same meaningless bytes each time, as line noise for hosts.
Bytes Garbage(std::size_t size);

// Counts the bytes that a connection receives until it has to be dropped.
class ReceiveLimit {
 public:
  explicit ReceiveLimit(const ConnectionFaults& faults) : remaining_(faults.drop_after) {}

  // Returns how many of the bytes that have arrived are within the limit.
  std::size_t Admit(std::size_t arrived);

  bool Reached() const { return remaining_ == std::size_t{0}; }

 private:
  std::optional<std::size_t> remaining_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_CONNECTION_FAULTS_H_
