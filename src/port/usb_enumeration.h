// The system's USB devices: walks device interfaces and gathers what the selection decides on.
#ifndef VEXO_PORT_USB_ENUMERATION_H_
#define VEXO_PORT_USB_ENUMERATION_H_

#include <cstddef>
#include <cstdint>

#include "port/usb_selection.h"
#include "port/usb_uri.h"

namespace vexo {

// Finds the printer that a URI means. -372: there is none; -9: no memory for a device's path; the system's error, or
// -300 when it gives none, when it does not list its devices. `found` is written on success only.
int32_t ResolveUsbDevicePath(const UsbCriteria& criteria, FoundUsbDevice* found);

// Finds a device among `class_count` device classes from `first_class` on (the exports say which they search), by the
// rules for printers; beside a device's own identifiers those of the device above it count. Results as
// ResolveUsbDevicePath; those of the last class count. 0 with nothing found: there is no class of that number.
int32_t FindUsbDeviceOfClass(const UsbCriteria& criteria, uint32_t first_class, uint32_t class_count,
                             FoundUsbDevice* found);

// Writes the list of the printers that are connected. 0, also without any; else as ResolveUsbDevicePath, with an empty
// list.
int32_t ListUsbPrinters(char* buffer, size_t size);

}  // namespace vexo

#endif  // VEXO_PORT_USB_ENUMERATION_H_
