// Reads parameters of a port's device URI.
#ifndef VEXO_SESSION_PORT_PARAMETER_H_
#define VEXO_SESSION_PORT_PARAMETER_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Copies one parameter of the open port's device URI, such as "sn", into a buffer of `size` bytes. Returns VEXO_OK,
// also when there is no such parameter and `out` is untouched; VEXO_ERROR_HANDLE or VEXO_ERROR_IO_NOT_OPEN for a bad or
// closed handle; VEXO_ERROR_PARAMETER or VEXO_ERROR_IO_SETTING when the port's URI is malformed;
// VEXO_ERROR_BUFFER_TOO_SMALL when the value with its terminating zero does not fit.
int32_t GetPortUriParameter(VexoPrinterHandle* handle, const char* key, char* out, int32_t size);

}  // namespace vexo

#endif  // VEXO_SESSION_PORT_PARAMETER_H_
