// Listening for what the printer says about finished tasks.
#ifndef VEXO_MONITOR_TASK_OVER_INFO_H_
#define VEXO_MONITOR_TASK_OVER_INFO_H_

#include <cstdint>
#include <string>

#include "protocol/bytes.h"
#include "vexo/printer.h"

namespace vexo {

// Listens for `time_ms` milliseconds and gives the texts of all V2 replies, decoded, with "|" between them. 0; -1: a
// text ends in the middle of a percent escape. With *heard false, nothing came, and the result is that of the last
// read. *text is filled only when something was heard and the result is 0.
int32_t ListenForTaskTexts(VexoPrinterHandle* handle, int32_t time_ms, std::string* text, bool* heard);

// The texts of the V2 replies in what was heard, still percent-encoded, with "|" between them.
std::string CollectReplyValues(const Bytes& heard);

}  // namespace vexo

#endif  // VEXO_MONITOR_TASK_OVER_INFO_H_
