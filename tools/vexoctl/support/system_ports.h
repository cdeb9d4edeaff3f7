#ifndef VEXOCTL_SUPPORT_SYSTEM_PORTS_H_
#define VEXOCTL_SUPPORT_SYSTEM_PORTS_H_

#include <string>
#include <vector>

#include "vexo/printer.hpp"

namespace vexoctl {

// Names of the ports that have a driver, "COM3" or "LPT1", in the order of their numbers.
std::vector<std::string> SerialPorts();
std::vector<std::string> ParallelPorts();

// The USB printers that are connected, in UTF-8. Throws a Failure.
std::vector<vexo::UsbPrinter> UsbPrinters();

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_SYSTEM_PORTS_H_
