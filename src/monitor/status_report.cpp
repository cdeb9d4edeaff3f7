#include "monitor/status_report.h"

#include <algorithm>
#include <iterator>

namespace vexo {
namespace {

// Compatibility: status 3 stays in the table although its reports are replies and never reach it.
constexpr struct {
  ProtocolFamily family;
  uint16_t type;
  uint16_t status;
  bool carries_value;
} kStatuses[] = {
    {ProtocolFamily::kV1, kReportJobStarted, 1, false},   {ProtocolFamily::kV1, kReportJobEnded, 2, true},
    {ProtocolFamily::kV1, kReportJobState, 3, false},     {ProtocolFamily::kGsParenH, kReplyJobStarted, 1, false},
    {ProtocolFamily::kGsParenH, kReplyJobEnded, 2, true}, {ProtocolFamily::kGsParenH, kReplyTrackingReset, 3, false},
};

}  // namespace

StatusReport MakeStatusReport(ProtocolFamily family, const ReportRecord& event) {
  StatusReport report;
  if (event.kind == RecordKind::kEmpty) {
    return report;
  }
  report.outcome = StatusReport::Outcome::kUnknown;
  const auto* const entry = std::find_if(std::begin(kStatuses), std::end(kStatuses), [&](const auto& candidate) {
    return candidate.family == family && candidate.type == event.type;
  });
  if (entry != std::end(kStatuses)) {
    report.outcome = StatusReport::Outcome::kEvent;
    report.status = entry->status;
    report.task_id = event.task_id;
    report.has_value = entry->carries_value;
    report.value = StateOfValue(event.value);
  }
  return report;
}

}  // namespace vexo
