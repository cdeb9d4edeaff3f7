// Port descriptors: the short texts that name a port, such as "COM3,9600", "NET,192.168.1.100" or "USB".
#ifndef VEXO_PORT_DESCRIPTOR_H_
#define VEXO_PORT_DESCRIPTOR_H_

#include <cstdint>

#include "port/device_uri.h"

namespace vexo {

// Converts a descriptor into a device URI. Modifies the descriptor: pass a private copy. Writes `out` on success only.
// Returns VEXO_OK; VEXO_ERROR_IO_SETTING when the descriptor is null or empty or lacks a required field;
// VEXO_ERROR_NOT_SUPPORTED_PRINTER for an unknown kind; VEXO_ERROR_BUFFER_TOO_SMALL for a URI of more than 255
// characters.
int32_t ConvertDescriptorToUri(char* descriptor, char (&out)[kUriBufferSize]);

}  // namespace vexo

#endif  // VEXO_PORT_DESCRIPTOR_H_
