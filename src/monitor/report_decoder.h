// Splits the printer's byte stream into reports. No I/O: bytes in, records out.
#ifndef VEXO_MONITOR_REPORT_DECODER_H_
#define VEXO_MONITOR_REPORT_DECODER_H_

#include <cstddef>
#include <cstdint>

#include "monitor/report_record.h"

namespace vexo {

// The protocol families. The numbers are those of SelectSDKRepintType.
enum class ProtocolFamily : uint32_t {
  kGsParenH = 0,  // GS ( H commands, replies that begin with 0x37; "report" frames are decoded, too.
  kV1 = 1,        // V1 commands, "report" frames.
};

// One step of decoding.
struct DecodeStep {
  // Bytes to consume, at most the size of the input: junk, and the frame if there is one.
  size_t consumed = 0;

  // Kind kEmpty: no complete frame; the bytes after the consumed ones wait for more.
  ReportRecord record;

  // The reply was 0x37 0x24: the printer has reset its task numbering.
  bool tracking_reset = false;
};

// Finds the next report in `bytes`. A "report" frame:
//
//   0   13  ESC FS "& V1 report"
//   13   2  type, low byte first
//   15   2  payload length n, low byte first
//   17   n  payload
//
// Fields that are not complete read as 0. A job end (0x37 0x23) carries no task number; the caller fills it in.
//
// Compatibility: a frame counts as complete when n bytes have arrived, counted from its first byte instead of from its
// payload (and its length can be read). A frame whose last 17 bytes or fewer are missing is therefore decoded early;
// hosts rely on receiving the event then.
DecodeStep DecodeNextReport(const uint8_t* bytes, size_t size, ProtocolFamily family);

}  // namespace vexo

#endif  // VEXO_MONITOR_REPORT_DECODER_H_
