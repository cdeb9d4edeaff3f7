// The job monitor's commands in both protocol families.
#ifndef VEXO_MONITOR_MONITOR_COMMANDS_H_
#define VEXO_MONITOR_MONITOR_COMMANDS_H_

#include <cstdint>

#include "monitor/report_decoder.h"
#include "protocol/bytes.h"

namespace vexo {

Bytes MonitoringCommand(ProtocolFamily family, bool on);

// Tags the next job with a task number.
Bytes TagCommand(ProtocolFamily family, int32_t task_id);

Bytes ClearTasksCommand(ProtocolFamily family);

// Resets the printer's own task numbering. Both families use the GS ( H command.
Bytes ResetNumbersCommand(bool await_answer);

}  // namespace vexo

#endif  // VEXO_MONITOR_MONITOR_COMMANDS_H_
