// Replaces and opens the port object of a printer handle. Several threads may do so with one handle: each continues
// with the port that it made, the handle keeps the last one, and the displaced ones are closed.
#ifndef VEXO_PORT_HANDLE_PORT_H_
#define VEXO_PORT_HANDLE_PORT_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Replaces the handle's port object, which is closed, by a new one that is not open yet. Returns VEXO_OK with the
// object in *port; VEXO_ERROR_HANDLE, changing nothing, when it is no printer handle; or the code of OpenPort, and the
// handle then has no port.
int32_t ReplaceHandlePort(VexoPrinterHandle* handle, const char* descriptor, VexoPort** port);

// Marks the handle open if `result` is VEXO_OK and the handle still holds the port. Returns `result`.
int32_t MarkHandleOpen(VexoPrinterHandle* handle, const VexoPort* port, int32_t result);

// Replaces the port and opens the new one. The handle is not open after a failure.
int32_t ReconnectHandle(VexoPrinterHandle* handle, const char* descriptor);

}  // namespace vexo

#endif  // VEXO_PORT_HANDLE_PORT_H_
