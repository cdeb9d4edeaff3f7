// What a printer's device URI tells about the printer.
#ifndef VEXO_SESSION_PORT_PARAMETER_H_
#define VEXO_SESSION_PORT_PARAMETER_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Copies one parameter of the open port's device URI, such as "sn", into a buffer of `size` bytes. 0, also without such
// a parameter: `out` is untouched then; -6, -309: bad or closed handle; -1, -301: the port gives no sound URI; -2: the
// value with its terminating zero does not fit.
int32_t GetPortUriParameter(VexoPrinterHandle* handle, const char* key, char* out, int32_t size);

}  // namespace vexo

#endif  // VEXO_SESSION_PORT_PARAMETER_H_
