// What the printer reported: the result of the decoders, and what the queue of the monitor holds.
#ifndef VEXO_MONITOR_REPORT_RECORD_H_
#define VEXO_MONITOR_REPORT_RECORD_H_

#include <cstdint>

#include "protocol/bytes.h"

namespace vexo {

enum class RecordKind : uint8_t {
  kEmpty = 0,         // No record.
  kIntermediate = 1,  // Never made here; the queue's readers skip it.
  kJobEvent = 2,
  kReply = 3,  // Any other reply.
};

// Types of "report" frames.
inline constexpr uint16_t kReportJobStarted = 0x100;
inline constexpr uint16_t kReportJobEnded = 0x101;
inline constexpr uint16_t kReportJobState = 0x102;
inline constexpr uint16_t kReportPlain = 0x103;
inline constexpr uint16_t kReportValue = 0x104;

// Second bytes of the replies of the GS ( H family, which serve as their types.
inline constexpr uint16_t kReplyJobStarted = 0x22;
inline constexpr uint16_t kReplyJobEnded = 0x23;
inline constexpr uint16_t kReplyTrackingReset = 0x24;

// The name of every report is "report", and nothing follows its payload: neither is kept.
struct ReportRecord {
  RecordKind kind = RecordKind::kEmpty;
  uint16_t type = 0;
  uint16_t length = 0;  // Of the payload as the printer announced it.
  int32_t task_id = 0;  // 0: the report carries none.
  uint32_t value = 0;   // 0: the report carries none.
  Bytes payload;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_REPORT_RECORD_H_
