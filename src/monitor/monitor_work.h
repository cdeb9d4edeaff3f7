// Switching job monitoring on and off, and reading its state and events.
#ifndef VEXO_MONITOR_MONITOR_WORK_H_
#define VEXO_MONITOR_MONITOR_WORK_H_

#include <cstdint>

#include "monitor/printer_read_helper.h"

namespace vexo {

// As the exports OpenReprintMonitorWork, CloseReprintMonitorWork and QueryReprintMonitorWork (extend.h), with the
// arguments checked and without the last-error rule.
int32_t OpenWork(CVEXOPrinterReadHelper* monitor);
int32_t CloseWork(CVEXOPrinterReadHelper* monitor);
int32_t QueryWork(CVEXOPrinterReadHelper* monitor, char* buffer, int32_t buffer_length);

// A job event as GetStatusReport gives it.
struct StatusReport {
  enum class Outcome {
    kEvent,
    kNone,
    kUnknown,  // The event is none of the protocol family in use.
  };

  Outcome outcome = Outcome::kNone;
  uint16_t status = 0;
  int32_t task_id = 0;
  bool has_value = false;
  uint32_t value = 0;
};

// Takes the next event off the queue. Does not ask the printer.
StatusReport TakeStatusReport(CVEXOPrinterReadHelper* monitor);

}  // namespace vexo

#endif  // VEXO_MONITOR_MONITOR_WORK_H_
