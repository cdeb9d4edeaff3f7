// Printers whose failures name them.
#ifndef VEXOCTL_SUPPORT_PRINTER_H_
#define VEXOCTL_SUPPORT_PRINTER_H_

#include <string>

#include "vexo/printer.hpp"
#include "vexoctl/console/options.h"

namespace vexoctl {

// Makes the port that a descriptor names. The printer is not contacted, but the device of a serial or USB port may be
// opened already; OpenPrinter reports that it cannot be opened. Throws a Failure if there is no such port.
vexo::Printer MakePrinter(const std::string& descriptor);

// Makes the port that the options name, sets its time limits and opens it. Throws a Failure.
vexo::Printer OpenPrinter(const Options& options);

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_PRINTER_H_
