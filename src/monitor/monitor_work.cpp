// Switches job monitoring on and off and reads its state and events.
#include <algorithm>
#include <mutex>
#include <string_view>

#include "monitor/monitor_commands.h"
#include "monitor/printer_read_helper.h"
#include "platform/clock.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace {

using vexo::ProtocolFamily;

constexpr uint32_t kMonitoringOffDelayMs = 300;  // A printer of the GS ( H family finishes reporting first.

// Compatibility: no terminating zero is written; hosts pass a zeroed buffer. A word that does not fit is truncated.
int32_t CopyWord(bool on, char* buffer, int32_t buffer_length) {
  const std::string_view word = on ? "on" : "off";
  word.copy(buffer, static_cast<size_t>(std::max(buffer_length, 0)));
  return VEXO_OK;
}

}  // namespace

int32_t CVEXOPrinterReadHelper::OpenWork() {
  const int32_t sent = Send(MonitoringCommand(sdkType, true));
  if (sent == VEXO_OK) {
    SetWorkOpen(true);
  }
  return sent;
}

int32_t CVEXOPrinterReadHelper::CloseWork() {
  const ProtocolFamily family = sdkType;
  if (family == ProtocolFamily::kGsParenH) {
    vexo::platform::SleepMs(kMonitoringOffDelayMs);
  }
  const int32_t sent = Send(MonitoringCommand(family, false));
  if (sent == VEXO_OK) {
    SetWorkOpen(false);
    ForgetJobs();
  }
  return sent;
}

void CVEXOPrinterReadHelper::SetWorkOpen(bool open) {
  Flags flags = flags_;
  while (!flags_.compare_exchange_weak(flags, Flags{flags.stopRequested, open && !flags.stopRequested})) {
  }
}

// Drops everything received and resets both task numbers.
void CVEXOPrinterReadHelper::ForgetJobs() {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  rxBuffer.Clear();
  replyQueue.Clear();
  postponed_.clear();
  requestedTaskId = 1;
  currentTaskId = 0;
}

int32_t CVEXOPrinterReadHelper::QueryWork(char* buffer, int32_t buffer_length) {
  if (sdkType == ProtocolFamily::kGsParenH) {
    return CopyWord(work_open(), buffer, buffer_length);
  }
  const int32_t sent = SendForAnswer(vexo::BuildGetValCommand("job_monitor"));
  if (sent != VEXO_OK) {
    return sent;
  }
  const vexo::ReportRecord answer = AwaitQueryAnswer();
  if (answer.kind == vexo::RecordKind::kEmpty) {
    return VEXO_ERROR_MONITOR_NO_ANSWER;
  }
  if (answer.length > buffer_length) {
    return VEXO_ERROR_MONITOR_ANSWER_TOO_LONG;
  }
  const bool on = answer.payload.size() > 1 && answer.payload[1] == 1;
  return CopyWord(on, buffer, buffer_length);
}

// Reads the queue only; does not query the printer.
vexo::StatusReport CVEXOPrinterReadHelper::TakeStatusReport() {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  return vexo::MakeStatusReport(sdkType, replyQueue.TakeEvent());
}
