// Listening for what the printer says about finished tasks.
#ifndef VEXO_MONITOR_TASK_OVER_INFO_H_
#define VEXO_MONITOR_TASK_OVER_INFO_H_

#include <cstdint>
#include <string>

#include "protocol/bytes.h"
#include "vexo/printer.h"

namespace vexo {

// As the export GetPrinterTaskOverInfo (extend.h), with the arguments checked.
int32_t ReadTaskOverInfo(VexoPrinterHandle* handle, int32_t time_ms, char* text, uint32_t text_length,
                         uint32_t* length);

// The texts of the V2 replies in what was heard, still percent-encoded, with "|" between them.
std::string CollectReplyValues(const Bytes& heard);

}  // namespace vexo

#endif  // VEXO_MONITOR_TASK_OVER_INFO_H_
