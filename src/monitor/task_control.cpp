#include "monitor/task_control.h"

#include <mutex>
#include <string>

#include "monitor/exchange.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

const Bytes kClearV1 = {0x1B, 0x1C, 0x26, 0x63, 0x6C};
const Bytes kClearGsParenH = {0x10, 0x14, 0x08, 0x01, 0x03, 0x14, 0x01, 0x06, 0x02, 0x08};

const Bytes& ClearCommand(ProtocolFamily family) { return family == ProtocolFamily::kV1 ? kClearV1 : kClearGsParenH; }

// The length field counts three bytes although a fourth one follows when an answer is wanted: printers take it so.
Bytes ResetCommand(bool await_answer) {
  Bytes body = {0x03, 0x00, 0x32, 0x30, 0x30};
  if (await_answer) {
    body.push_back(0x0A);
  }
  return BuildGsParenHCommand(body);
}

}  // namespace

int32_t TagNextJob(CVEXOPrinterReadHelper* monitor, int32_t task_id) {
  monitor->SetRequestedTask(task_id);
  const std::string number = TaskNumberText(task_id);
  if (monitor->family() == ProtocolFamily::kV1) {
    return SendSetVal(monitor, "process_id", number);
  }
  Bytes body = {0x06, 0x00, 0x30, 0x30};
  Append(&body, number);
  return SendGsParenH(monitor, body);
}

int32_t ClearTasks(CVEXOPrinterReadHelper* monitor) { return AwaitAnswer(monitor, ClearCommand(monitor->family())); }

int32_t QueryDeviceStatus(CVEXOPrinterReadHelper* monitor, uint32_t* status) {
  const std::lock_guard<platform::RecursiveMutex> guard(monitor->io_lock());
  const int32_t sent = SendForAnswer(monitor, BuildGetValCommand("reprint_status"));
  if (sent != VEXO_OK) {
    return sent;
  }
  monitor->Poll(monitor->read_timeout());
  const ReportRecord answer = monitor->queue().TakeAnswer();
  if (answer.kind == RecordKind::kEmpty) {
    return VEXO_ERROR_MONITOR_NO_ANSWER;
  }
  *status = ~answer.value;  // Printers report the state inverted.
  return VEXO_OK;
}

int32_t FeedPaper(CVEXOPrinterReadHelper* monitor) { return monitor->Send(BuildDoCommand("print_feedform")); }

// Without an answer to wait for, "no answer" is the result even when all went well; hosts know it as such.
int32_t ResetTaskNumbers(CVEXOPrinterReadHelper* monitor, bool await_answer) {
  if (await_answer) {
    return AwaitAnswer(monitor, ResetCommand(true));
  }
  SendForAnswer(monitor, ResetCommand(false));
  return VEXO_ERROR_MONITOR_NO_ANSWER;
}

}  // namespace vexo
