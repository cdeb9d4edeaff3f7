#ifndef VEXOCTL_USB_PRINTERS_H_
#define VEXOCTL_USB_PRINTERS_H_

#include <vector>

#include "vexo/printer.hpp"

namespace vexoctl {

// The USB printers that are connected now, in UTF-8. Throws a Failure.
std::vector<vexo::UsbPrinter> ListUsbPrinters();

}  // namespace vexoctl

#endif  // VEXOCTL_USB_PRINTERS_H_
