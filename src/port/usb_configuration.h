// The host's extension of the list of USB printers.
#ifndef VEXO_PORT_USB_CONFIGURATION_H_
#define VEXO_PORT_USB_CONFIGURATION_H_

#include <string_view>

namespace vexo {

// Whether a device qualifies by configuration.
//
// Compatibility: every device of the system's USB printer class qualifies while the current directory has a readable
// file "vidpid_cfg.txt", whatever the hardware id and the contents of the file, even if it is empty.
//
// The file was meant to list identifiers, one a line, that are searched for in the hardware id. But the lines kept
// their line ends, which no hardware id contains, and the search went on to the empty rest of the table, which matches
// everything. Hosts rely on the file letting their printers through even though no line names them.
bool IsConfiguredDevice(std::string_view hardware_id);

}  // namespace vexo

#endif  // VEXO_PORT_USB_CONFIGURATION_H_
