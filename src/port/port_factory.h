// Makes port objects from descriptors and device URIs.
#ifndef VEXO_PORT_PORT_FACTORY_H_
#define VEXO_PORT_PORT_FACTORY_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Makes a configured port object from a port descriptor or a device URI, of which the first 255 characters count. Does
// not open the device. On failure *port is untouched and nothing is held. Release the object with ClosePort.
//
// Returns VEXO_OK; VEXO_ERROR_IO_SETTING for a null or malformed text or one of fewer than 3 characters;
// VEXO_ERROR_NOT_SUPPORTED_PRINTER when the kind of port has no driver; a positive system error when the port lock
// cannot be created; otherwise the code of the driver's Configure.
//
// Compatibility: out of memory is VEXO_ERROR_BUFFER_TOO_SMALL, for a buffer port VEXO_ERROR_OUT_OF_MEMORY. A descriptor
// of unknown kind is VEXO_ERROR_IO_SETTING, a URI of unknown TYPE VEXO_ERROR_NOT_SUPPORTED_PRINTER.
int32_t OpenPort(VexoPort** port, const char* text);

}  // namespace vexo

#endif  // VEXO_PORT_PORT_FACTORY_H_
