// The common reader of printers' replies.
#ifndef VEXO_PROTOCOL_REPLY_READER_H_
#define VEXO_PROTOCOL_REPLY_READER_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Collects a reply into destination[first] up to destination[end - 1]. Receives at least once and at most `tries`
// times (values below 1: once), pauses for `pause_ms` after each receive but the first, and stops at the first empty
// receive after data. Bytes that no longer fit are received and dropped.
//
// *stored receives the number of bytes stored; 0 means that no reply came, which is not a failure here. 0; -6, -309:
// bad or closed handle at the start, *stored is untouched then; -1: end lies before first. Throws std::bad_alloc.
int32_t ReadReply(VexoPrinterHandle* handle, uint8_t* destination, uint32_t first, uint32_t end, uint32_t* stored,
                  int32_t tries, int64_t pause_ms);

// As ReadReply, for a stream that goes on behind the reply: nothing that is received may be dropped. So each receive
// asks for no more than there is room for, and the last one leaves less than a packet's worth (64 bytes). Needs no
// memory of its own.
int32_t ReadStream(VexoPrinterHandle* handle, uint8_t* destination, uint32_t size, uint32_t* stored, int32_t tries,
                   int64_t pause_ms);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_READER_H_
