// The port object inside a printer handle: taken out, replaced and opened. Several threads may do so with one handle:
// each works on the port that it made itself, the handle keeps the one that was put into it last, and what it held
// before is closed.
#ifndef VEXO_PORT_HANDLE_PORT_H_
#define VEXO_PORT_HANDLE_PORT_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Puts a new port object, not opened yet, into the handle in place of the one it may hold, which is closed. 0, with the
// object in *port; -6: no printer handle, nothing is touched; else the code of OpenPort: the handle then holds no port.
int32_t ReplaceHandlePort(VexoPrinterHandle* handle, const char* descriptor, VexoPort** port);

// Marks the handle open when `result` is 0 and it still holds the port. Gives the result back.
int32_t MarkHandleOpen(VexoPrinterHandle* handle, const VexoPort* port, int32_t result);

// Replaces the port and opens the new one. After a failure the handle is not open.
int32_t ReconnectHandle(VexoPrinterHandle* handle, const char* descriptor);

}  // namespace vexo

#endif  // VEXO_PORT_HANDLE_PORT_H_
