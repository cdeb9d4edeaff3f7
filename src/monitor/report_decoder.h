// Cuts the printer's byte stream into reports. Pure: bytes in, records out.
#ifndef VEXO_MONITOR_REPORT_DECODER_H_
#define VEXO_MONITOR_REPORT_DECODER_H_

#include <cstddef>
#include <cstdint>

#include "monitor/report_record.h"

namespace vexo {

// The two ways in which printers speak of jobs. The numbers are those of SelectSDKRepintType.
enum class ProtocolFamily : uint32_t {
  kGsParenH = 0,  // GS ( H commands, replies that begin with 0x37; "report" frames are understood, too.
  kV1 = 1,        // V1 commands, "report" frames.
};

// One step through the stream.
struct DecodeStep {
  // Bytes done with, at most the size of the input: junk, and the frame if there is one.
  size_t consumed = 0;

  // Kind kEmpty: no complete frame; what lies behind the consumed bytes waits for more.
  ReportRecord record;

  // The reply 0x37 0x24: the printer numbers its tasks anew.
  bool tracking_reset = false;
};

// Finds the next report in `bytes`. A "report" frame:
//
//   0   13  ESC FS "& V1 report"
//   13   2  type, low byte first
//   15   2  payload length n, low byte first
//   17   n  payload
//
// It counts as complete when n bytes are there from the frame's first byte on (and its length can be read), so one
// whose last bytes are missing is taken early: printers in the field are driven that way, and hosts rely on the event
// coming then. Fields that are not all there read as 0. The end of a job (0x37 0x23) carries no task number: it is the
// caller's to fill in.
DecodeStep DecodeNextReport(const uint8_t* bytes, size_t size, ProtocolFamily family);

}  // namespace vexo

#endif  // VEXO_MONITOR_REPORT_DECODER_H_
