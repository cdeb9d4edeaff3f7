// Tagging jobs with task numbers, clearing tasks, and the printer's own state.
#ifndef VEXO_MONITOR_TASK_CONTROL_H_
#define VEXO_MONITOR_TASK_CONTROL_H_

#include <cstdint>

#include "monitor/printer_read_helper.h"

namespace vexo {

inline constexpr int32_t kLowestTask = 1;
inline constexpr int32_t kHighestTask = 9999;

// As the exports SetPrintTaskId, SetClearPrintTask, GetDeviceStatus, SetPaperFeed and ResetPrinterInteriorId
// (extend.h), with the arguments checked, the work open where that is required, and without the last-error rule.
int32_t TagNextJob(CVEXOPrinterReadHelper* monitor, int32_t task_id);
int32_t ClearTasks(CVEXOPrinterReadHelper* monitor);
int32_t QueryDeviceStatus(CVEXOPrinterReadHelper* monitor, uint32_t* status);
int32_t FeedPaper(CVEXOPrinterReadHelper* monitor);
int32_t ResetTaskNumbers(CVEXOPrinterReadHelper* monitor, bool await_answer);

}  // namespace vexo

#endif  // VEXO_MONITOR_TASK_CONTROL_H_
