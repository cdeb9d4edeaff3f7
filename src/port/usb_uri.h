// What an opened USB port adds to its URI: where its device was found. Hosts read it there, and a URI with it opens the
// same device again.
#ifndef VEXO_PORT_USB_URI_H_
#define VEXO_PORT_USB_URI_H_

#include <cstddef>

#include "port/device_uri.h"

namespace vexo {

// A device that was found, in the texts of a port's state.
struct FoundUsbDevice {
  char path[kUriBufferSize] = {};  // For CreateFile. Empty: none was looked for.
  char location[kUriBufferSize] = {};
  char serial[kUriBufferSize] = {};
  bool has_serial = false;  // Devices found by class are known by location and path alone.
  bool gated = false;
};

// Length of what a URI says apart from the parameters "location", "deviceid" and "sn" that an earlier opening left at
// its end.
size_t LengthWithoutFoundDevice(const char* uri);

// Puts the parameters for `device` behind the first `length` characters of a URI in a buffer of 256 bytes, in place of
// what stands there. The last one is cut at the buffer's end, and left out when nothing of its value remains: a URI
// must not end in an empty value.
void WriteFoundDevice(char* uri, size_t length, const FoundUsbDevice& device);

}  // namespace vexo

#endif  // VEXO_PORT_USB_URI_H_
