#ifndef VIRTUAL_PRINTER_MODEL_LEFT_MONITORING_H_
#define VIRTUAL_PRINTER_MODEL_LEFT_MONITORING_H_

#include <cstddef>
#include <deque>
#include <optional>

#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {

// Monitoring that was on when its connection ended. A host whose connection broke comes back and expects its reports
// to go on, without asking again; so the next connections take over what others left.
class LeftMonitoring {
 public:
  explicit LeftMonitoring(std::optional<ReportFamily> at_start) {
    if (at_start) {
      Leave(*at_start);
    }
  }

  bool IsEmpty() const { return left_.empty(); }

  void Leave(ReportFamily family) {
    left_.push_back(family);
    if (left_.size() > kMaxLeft) {
      left_.pop_front();
    }
  }

  // What was left first; nothing when nothing is left.
  std::optional<ReportFamily> TakeOver() {
    if (left_.empty()) {
      return std::nullopt;
    }
    const ReportFamily family = left_.front();
    left_.pop_front();
    return family;
  }

 private:
  // Hosts that never come back must not fill the memory.
  static constexpr std::size_t kMaxLeft = 16;

  std::deque<ReportFamily> left_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_LEFT_MONITORING_H_
