// Makes port objects from the texts that callers name ports with.
#ifndef VEXO_PORT_PORT_FACTORY_H_
#define VEXO_PORT_PORT_FACTORY_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Makes a configured port object from a port descriptor or a device URI; the device is not opened. Of a longer text
// the first 255 characters count. On failure *port is untouched and nothing is held.
//
// 0; -301: null text, fewer than 3 characters, or neither a URI nor a descriptor; -4: no driver for this kind of port;
// -2 (buffer port: -9): out of memory; positive: the port lock could not be created; else the code of the driver's
// Configure. Release the object with ClosePort.
int32_t OpenPort(VexoPort** port, const char* text);

}  // namespace vexo

#endif  // VEXO_PORT_PORT_FACTORY_H_
