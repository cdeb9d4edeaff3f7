// Listens for what the printer reports about finished tasks.
#ifndef VEXO_MONITOR_TASK_OVER_INFO_H_
#define VEXO_MONITOR_TASK_OVER_INFO_H_

#include <cstdint>
#include <string>

#include "protocol/bytes.h"
#include "vexo/printer.h"

namespace vexo {

// Implements GetPrinterTaskOverInfo (extend.h), with checked arguments.
int32_t ReadTaskOverInfo(VexoPrinterHandle* handle, int32_t time_ms, char* text, uint32_t text_length,
                         uint32_t* length);

// Returns the values of the V2 replies in `heard`, still percent-encoded, separated by "|".
std::string CollectReplyValues(const Bytes& heard);

}  // namespace vexo

#endif  // VEXO_MONITOR_TASK_OVER_INFO_H_
