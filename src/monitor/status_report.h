// A job event as GetStatusReport gives it.
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
    kUnknown,  // The event is none of the protocol family in use.
  };

  Outcome outcome = Outcome::kNone;
  uint16_t status = 0;
  int32_t task_id = 0;
  bool has_value = false;
  uint32_t value = 0;
};

StatusReport MakeStatusReport(ProtocolFamily family, const ReportRecord& event);

// Printers report their state inverted.
inline uint32_t StateOfValue(uint32_t value) { return ~value; }

}  // namespace vexo

#endif  // VEXO_MONITOR_STATUS_REPORT_H_
