// The port object inside a printer handle: taken out, replaced and opened.
#ifndef VEXO_PORT_HANDLE_PORT_H_
#define VEXO_PORT_HANDLE_PORT_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Puts a new port object, not opened yet, into the handle in place of the one it may hold, which is closed. 0; -6: no
// printer handle, nothing is touched; else the code of OpenPort: the handle then holds no port.
int32_t ReplaceHandlePort(VexoPrinterHandle* handle, const char* descriptor);

// Marks the handle open when `result` is 0, and gives it back.
int32_t MarkHandleOpen(VexoPrinterHandle* handle, int32_t result);

// Replaces the port and opens the new one. After a failure the handle is not open.
int32_t ReconnectHandle(VexoPrinterHandle* handle, const char* descriptor);

}  // namespace vexo

#endif  // VEXO_PORT_HANDLE_PORT_H_
