// One decoded report, as the decoders return it and the monitor's queue holds it.
#ifndef VEXO_MONITOR_REPORT_RECORD_H_
#define VEXO_MONITOR_REPORT_RECORD_H_

#include <cstdint>

#include "protocol/bytes.h"

namespace vexo {

enum class RecordKind : uint8_t {
  kEmpty = 0,         // No record.
  kIntermediate = 1,  // Compatibility: never produced, but skipped by the queue's readers.
  kJobEvent = 2,
  kReply = 3,  // Any other reply.
};

// Types of "report" frames.
inline constexpr uint16_t kReportJobStarted = 0x100;
inline constexpr uint16_t kReportJobEnded = 0x101;
inline constexpr uint16_t kReportJobState = 0x102;
inline constexpr uint16_t kReportPlain = 0x103;
inline constexpr uint16_t kReportValue = 0x104;

// Second bytes of the GS ( H family's replies, used as their types.
inline constexpr uint16_t kReplyJobStarted = 0x22;
inline constexpr uint16_t kReplyJobEnded = 0x23;
inline constexpr uint16_t kReplyTrackingReset = 0x24;

struct ReportRecord {
  RecordKind kind = RecordKind::kEmpty;
  uint16_t type = 0;
  uint16_t length = 0;  // Length of the payload as announced by the printer.
  int32_t task_id = 0;  // 0: the report carries none.
  uint32_t value = 0;   // 0: the report carries none.
  Bytes payload;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_REPORT_RECORD_H_
