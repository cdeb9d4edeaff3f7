// The parameters that an opened USB port adds to its URI: where its device was found. Hosts read them, and a URI with
// them opens the same device again.
#ifndef VEXO_PORT_USB_URI_H_
#define VEXO_PORT_USB_URI_H_

#include <cstddef>

#include "port/device_uri.h"

namespace vexo {

// The device found, in the texts of the port's state.
struct FoundUsbDevice {
  char path[kUriBufferSize] = {};  // For CreateFile; empty if no device was found.
  char location[kUriBufferSize] = {};
  char serial[kUriBufferSize] = {};
  bool has_serial = false;  // False for devices found by class, which have only a location and a path.
  bool gated = false;
};

// Returns the length of a URI without the parameters "location", "deviceid" and "sn" that an earlier Open appended.
size_t LengthWithoutFoundDevice(const char* uri);

// Writes the parameters for `device` after the first `length` characters of a URI in a buffer of 256 bytes, replacing
// the rest. The last one is cut off at the end of the buffer, or left out if none of its value fits, because a URI must
// not end in an empty value.
void WriteFoundDevice(char* uri, size_t length, const FoundUsbDevice& device);

}  // namespace vexo

#endif  // VEXO_PORT_USB_URI_H_
