#include "monitor/monitor_work.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <string_view>

#include "monitor/exchange.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr std::string_view kMonitorKey = "job_monitor";
constexpr std::string_view kOn = "on";
constexpr std::string_view kOff = "off";

const Bytes kMonitoringOn = {0x03, 0x00, 0x31, 0x30, 0x32};
const Bytes kMonitoringOff = {0x03, 0x00, 0x31, 0x30, 0x30};
constexpr uint32_t kMonitoringOffDelayMs = 300;  // The printer finishes reporting first.

constexpr int kQueryAttempts = 2;
constexpr int64_t kQueryPollMs = 200;

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

// Hosts pass a zeroed buffer: no terminating zero is written. Of a word that does not fit they get the beginning.
int32_t CopyWord(bool on, char* buffer, int32_t buffer_length) {
  const std::string_view word = on ? kOn : kOff;
  word.copy(buffer, static_cast<size_t>(std::max(buffer_length, 0)));
  return VEXO_OK;
}

ReportRecord TakeQueryAnswer(CVEXOPrinterReadHelper* monitor) {
  for (int attempt = 0; attempt < kQueryAttempts; ++attempt) {
    {
      const std::lock_guard<platform::RecursiveMutex> guard(monitor->io_lock());
      ReportRecord answer = monitor->queue().TakeAnswer();
      if (answer.kind != RecordKind::kEmpty) {
        return answer;
      }
    }
    monitor->Poll(kQueryPollMs);
  }
  return {};
}

}  // namespace

int32_t OpenWork(CVEXOPrinterReadHelper* monitor) {
  const int32_t sent = monitor->family() == ProtocolFamily::kV1 ? SendSetVal(monitor, kMonitorKey, kOn)
                                                                : SendGsParenH(monitor, kMonitoringOn);
  if (sent == VEXO_OK) {
    monitor->SetWorkOpen(true);
  }
  return sent;
}

int32_t CloseWork(CVEXOPrinterReadHelper* monitor) {
  const int32_t sent = monitor->family() == ProtocolFamily::kV1
                           ? SendSetVal(monitor, kMonitorKey, kOff)
                           : SendGsParenH(monitor, kMonitoringOff, kMonitoringOffDelayMs);
  if (sent == VEXO_OK) {
    monitor->SetWorkOpen(false);
    monitor->ForgetJobs();
  }
  return sent;
}

int32_t QueryWork(CVEXOPrinterReadHelper* monitor, char* buffer, int32_t buffer_length) {
  if (monitor->family() == ProtocolFamily::kGsParenH) {
    return CopyWord(monitor->work_open(), buffer, buffer_length);
  }
  const int32_t sent = SendForAnswer(monitor, BuildGetValCommand(kMonitorKey));
  if (sent != VEXO_OK) {
    return sent;
  }
  const ReportRecord answer = TakeQueryAnswer(monitor);
  if (answer.kind == RecordKind::kEmpty) {
    return VEXO_ERROR_MONITOR_NO_ANSWER;
  }
  if (answer.length > buffer_length) {
    return VEXO_ERROR_MONITOR_ANSWER_TOO_LONG;
  }
  const bool on = answer.payload.size() > 1 && answer.payload[1] == 1;
  return CopyWord(on, buffer, buffer_length);
}

StatusReport TakeStatusReport(CVEXOPrinterReadHelper* monitor) {
  ReportRecord event;
  {
    const std::lock_guard<platform::RecursiveMutex> guard(monitor->io_lock());
    event = monitor->queue().TakeEvent();
  }
  StatusReport report;
  if (event.kind == RecordKind::kEmpty) {
    return report;
  }
  report.outcome = StatusReport::Outcome::kUnknown;
  const ProtocolFamily family = monitor->family();
  const auto* const entry = std::find_if(std::begin(kStatuses), std::end(kStatuses), [&](const auto& candidate) {
    return candidate.family == family && candidate.type == event.type;
  });
  if (entry != std::end(kStatuses)) {
    report.outcome = StatusReport::Outcome::kEvent;
    report.status = entry->status;
    report.task_id = event.task_id;
    report.has_value = entry->carries_value;
    report.value = ~event.value;  // Printers report the state inverted.
  }
  return report;
}

}  // namespace vexo
