// Enumerates the system's device interfaces and gathers the texts that the selection is based on.
#ifndef VEXO_PORT_USB_ENUMERATION_H_
#define VEXO_PORT_USB_ENUMERATION_H_

#include <cstddef>
#include <cstdint>

#include "port/usb_selection.h"
#include "port/usb_uri.h"

namespace vexo {

// Finds the printer that the criteria describe. Writes `found` on success only. Returns VEXO_OK;
// VEXO_ERROR_USB_NOT_FOUND; VEXO_ERROR_OUT_OF_MEMORY; or, when the devices cannot be listed, the system's error
// (VEXO_ERROR_IO when it gives none).
int32_t ResolveUsbDevicePath(const UsbCriteria& criteria, FoundUsbDevice* found);

// Finds a device among `class_count` device classes from `first_class` on, by the rules for printers; the identifiers
// of the parent device count, too. Returns as ResolveUsbDevicePath; the result of the last class counts.
//
// Compatibility: a class index beyond the table returns VEXO_OK with nothing found.
int32_t FindUsbDeviceOfClass(const UsbCriteria& criteria, uint32_t first_class, uint32_t class_count,
                             FoundUsbDevice* found);

// Writes the list of the connected printers. Returns VEXO_OK, also for an empty list, or a code of ResolveUsbDevicePath
// with an empty list.
int32_t ListUsbPrinters(char* buffer, size_t size);

}  // namespace vexo

#endif  // VEXO_PORT_USB_ENUMERATION_H_
