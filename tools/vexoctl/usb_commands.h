// The commands of the "usb" family, each in a file of its own, listed in usb_commands.cpp.
#ifndef VEXOCTL_USB_COMMANDS_H_
#define VEXOCTL_USB_COMMANDS_H_

#include <CLI/CLI.hpp>

#include "vexoctl/settings.h"

namespace vexoctl {

void AddUsbListCommand(CLI::App& usb, const Settings& settings);
void AddUsbWatchCommand(CLI::App& usb, const Settings& settings);

}  // namespace vexoctl

#endif  // VEXOCTL_USB_COMMANDS_H_
