#include "vexoctl/usb_commands.h"

#include "vexoctl/commands.h"

namespace vexoctl {

void AddUsbCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const usb = tool.add_subcommand("usb", "Watch USB printers come and go");
  usb->require_subcommand(1);
  usb->footer(
      "Examples:\n"
      "  vexoctl usb watch");
  AddUsbWatchCommand(*usb, settings);
}

}  // namespace vexoctl
