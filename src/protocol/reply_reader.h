// The common reader of printer replies.
#ifndef VEXO_PROTOCOL_REPLY_READER_H_
#define VEXO_PROTOCOL_REPLY_READER_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Collects a reply into destination[first] up to destination[end - 1]. Receives at least once and at most `tries`
// times, sleeps for `pause_ms` after each receive but the first, and stops at the first empty receive after data. Bytes
// that do not fit are received and dropped.
//
// *stored receives the number of bytes stored. Returns VEXO_OK, or with *stored untouched VEXO_ERROR_HANDLE,
// VEXO_ERROR_IO_NOT_OPEN or VEXO_ERROR_PARAMETER (`end` before `first`). Throws std::bad_alloc.
//
// Compatibility: a failed read ends the collecting but is not reported; callers detect a missing reply by *stored being
// 0. `tries` below 1 still means one receive.
int32_t ReadReply(VexoPrinterHandle* handle, uint8_t* destination, uint32_t first, uint32_t end, uint32_t* stored,
                  int32_t tries, int64_t pause_ms);

// As ReadReply, for a stream that continues after the reply, so that nothing received may be dropped: each receive asks
// for no more than there is room for, and collecting stops when less than one packet (64 bytes) is free. Does not
// allocate.
int32_t ReadStream(VexoPrinterHandle* handle, uint8_t* destination, uint32_t size, uint32_t* stored, int32_t tries,
                   int64_t pause_ms);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_READER_H_
