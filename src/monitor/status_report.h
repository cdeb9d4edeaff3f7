// A job event in the form of GetStatusReport.
#ifndef VEXO_MONITOR_STATUS_REPORT_H_
#define VEXO_MONITOR_STATUS_REPORT_H_

#include <cstdint>

#include "monitor/report_decoder.h"
#include "monitor/report_record.h"

namespace vexo {

struct StatusReport {
  enum class Outcome {
    kEvent,
    kNone,
    kUnknown,  // The selected protocol family does not know the event.
  };

  Outcome outcome = Outcome::kNone;
  uint16_t status = 0;
  int32_t task_id = 0;
  bool has_value = false;
  uint32_t value = 0;
};

StatusReport MakeStatusReport(ProtocolFamily family, const ReportRecord& event);

// Compatibility: hosts receive the complement of the value, callbacks the value itself.
inline uint32_t StateOfValue(uint32_t value) { return ~value; }

}  // namespace vexo

#endif  // VEXO_MONITOR_STATUS_REPORT_H_
