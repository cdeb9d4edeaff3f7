// Parses the path of a device interface, such as
// \\?\USB#VID_1A2B&PID_0001#ABC123#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}
#ifndef VEXO_DISCOVERY_INTERFACE_PATH_H_
#define VEXO_DISCOVERY_INTERFACE_PATH_H_

#include <string>
#include <string_view>

namespace vexo {

// Returns the instance part in upper case: the third of the parts between "#" (ABC123). For a USB device it contains
// the serial number. Empty when the path has fewer parts.
std::string InstanceOfInterfacePath(std::string_view path);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_INTERFACE_PATH_H_
