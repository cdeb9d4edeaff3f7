// The host's own extension of the list of USB printers.
#ifndef VEXO_PORT_USB_CONFIGURATION_H_
#define VEXO_PORT_USB_CONFIGURATION_H_

#include <string_view>

namespace vexo {

// Whether the configuration lets a device through: whether the current directory has a file "vidpid_cfg.txt" that can
// be read. Then every device of the system's USB printer class qualifies, whatever its hardware id and whatever the
// file says, even if it is empty.
//
// It is meant to list identifiers, one a line, in a table that is searched from its first line to the first one found
// in a hardware id. But the lines have kept their line ends, which no hardware id has, and the search ends at the empty
// rest of the table, which stands in every text. Hosts in the field rely on the file letting their printers through,
// though its lines do not name them.
bool IsConfiguredDevice(std::string_view hardware_id);

}  // namespace vexo

#endif  // VEXO_PORT_USB_CONFIGURATION_H_
