// Tags jobs with task numbers, clears tasks, and queries and controls the printer.
#include <mutex>

#include "monitor/monitor_commands.h"
#include "monitor/printer_read_helper.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

int32_t CVEXOPrinterReadHelper::TagNextJob(int32_t task_id) {
  requestedTaskId = task_id;
  return Send(vexo::TagCommand(sdkType, task_id));
}

int32_t CVEXOPrinterReadHelper::ClearTasks() { return AwaitAnswer(vexo::ClearTasksCommand(sdkType)); }

int32_t CVEXOPrinterReadHelper::QueryDeviceStatus(uint32_t* status) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  const int32_t sent = SendForAnswer(vexo::BuildGetValCommand("reprint_status"));
  if (sent != VEXO_OK) {
    return sent;
  }
  Poll(readTimeout);
  const vexo::ReportRecord answer = replyQueue.TakeAnswer();
  if (answer.kind == vexo::RecordKind::kEmpty) {
    return VEXO_ERROR_MONITOR_NO_ANSWER;
  }
  *status = vexo::StateOfValue(answer.value);
  return VEXO_OK;
}

int32_t CVEXOPrinterReadHelper::FeedPaper() { return Send(vexo::BuildDoCommand("print_feedform")); }

// Compatibility: mode 0 waits for no answer and always returns "no answer", even when the command was sent.
int32_t CVEXOPrinterReadHelper::ResetTaskNumbers(bool await_answer) {
  const vexo::Bytes command = vexo::ResetNumbersCommand(await_answer);
  if (await_answer) {
    return AwaitAnswer(command);
  }
  SendForAnswer(command);
  return VEXO_ERROR_MONITOR_NO_ANSWER;
}
