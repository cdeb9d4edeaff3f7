// Port descriptors: the short texts that callers name a port with, such as "COM3,9600", "NET,192.168.1.100" or "USB".
#ifndef VEXO_PORT_DESCRIPTOR_H_
#define VEXO_PORT_DESCRIPTOR_H_

#include <cstdint>

#include "port/device_uri.h"

namespace vexo {

// Turns a descriptor into a device URI. The descriptor is cut up and partly upper-cased in place: pass a private copy.
// 0; -301: null, no field, or a required field is missing; -4: unknown kind word; -2: the URI would be longer than 255
// characters. `out` is written on success only.
int32_t ConvertDescriptorToUri(char* descriptor, char (&out)[kUriBufferSize]);

}  // namespace vexo

#endif  // VEXO_PORT_DESCRIPTOR_H_
