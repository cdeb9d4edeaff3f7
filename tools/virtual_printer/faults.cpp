#include "virtual_printer/faults.h"

#include <algorithm>

namespace virtual_printer {

std::vector<AnswerPiece> PlanAnswer(const Faults& faults, const Bytes& answer) {
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

std::size_t ReceiveLimit::Admit(std::size_t arrived) {
  if (!remaining_) {
    return arrived;
  }
  const std::size_t admitted = std::min(arrived, *remaining_);
  *remaining_ -= admitted;
  return admitted;
}

}  // namespace virtual_printer
