#include "virtual_printer/wire/connection_faults.h"

#include <algorithm>
#include <cstdint>

namespace virtual_printer {

std::vector<AnswerPiece> PlanAnswer(const ConnectionFaults& faults, const Bytes& answer) {
  if (faults.silent || answer.empty()) {
    return {};
  }
  std::vector<AnswerPiece> pieces;
  if (faults.split_pause) {
    for (const std::uint8_t byte : answer) {
      pieces.push_back({*faults.split_pause, {byte}});
    }
  } else {
    pieces.push_back({faults.delay, answer});
  }
  pieces.front().pause = faults.delay;
  return pieces;
}

Bytes Garbage(std::size_t size) {
  // A host would take either byte for the start of a frame, and real answers behind it for the rest of that frame.
  const auto begins_a_frame = [](std::uint8_t byte) { return byte == 0x1B || byte == 0x37; };
  constexpr std::uint32_t kScatter = 0x9E3779B1;  // Its multiples look random.
  Bytes garbage;
  for (std::uint32_t i = 1; garbage.size() < size; ++i) {
    const auto byte = static_cast<std::uint8_t>((i * kScatter) >> 24);
    if (!begins_a_frame(byte)) {
      garbage.push_back(byte);
    }
  }
  return garbage;
}

std::size_t ReceiveLimit::Admit(std::size_t arrived) {
  if (!remaining_) {
    return arrived;
  }
  const std::size_t admitted = std::min(arrived, *remaining_);
  *remaining_ -= admitted;
  return admitted;
}

}  // namespace virtual_printer
