#include "vexoctl/usb_commands.h"

#include "vexoctl/commands.h"

namespace vexoctl {

void AddUsbCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const usb = tool.add_subcommand("usb", "List USB printers, and watch them come and go");
  usb->require_subcommand(1);
  usb->footer(
      "Examples:\n"
      "  vexoctl usb list\n"
      "  vexoctl usb watch");
  AddUsbListCommand(*usb, settings);
  AddUsbWatchCommand(*usb, settings);
}

}  // namespace vexoctl
