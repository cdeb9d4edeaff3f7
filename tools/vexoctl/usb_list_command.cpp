#include "vexoctl/report.h"
#include "vexoctl/usb_commands.h"
#include "vexoctl/usb_printers.h"

namespace vexoctl {
namespace {

std::string OrUnknown(const std::string& text) { return text.empty() ? "unknown" : text; }

nlohmann::ordered_json OrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

Result DescribePrinters(const std::vector<vexo::UsbPrinter>& printers) {
  Result result;
  result.json = {{"printers", nlohmann::ordered_json::array()}};
  for (const vexo::UsbPrinter& printer : printers) {
    result.text += (result.text.empty() ? "" : "\n") + OrUnknown(printer.descriptor()) +
                   "\n  name: " + OrUnknown(printer.name) + "\n  serial: " + OrUnknown(printer.serial) +
                   "\n  ids: " + OrUnknown(printer.ids) + "\n  port: " + OrUnknown(printer.port) +
                   "\n  location: " + OrUnknown(printer.location) + "\n";
    result.json["printers"].push_back({{"descriptor", OrNull(printer.descriptor())},
                                       {"name", OrNull(printer.name)},
                                       {"serial", OrNull(printer.serial)},
                                       {"ids", OrNull(printer.ids)},
                                       {"port", OrNull(printer.port)},
                                       {"location", OrNull(printer.location)}});
  }
  if (printers.empty()) {
    result.text = "no USB printers\n";
  }
  return result;
}

}  // namespace

void AddUsbListCommand(CLI::App& usb, const Settings& settings) {
  CLI::App* const command = usb.add_subcommand("list", "Show the USB printers that are connected");
  command->footer(
      "Each printer begins with what to give as -p for it. Printers of other makers are shown\n"
      "when the current directory holds a file vidpid_cfg.txt.\n"
      "Examples:\n"
      "  vexoctl usb list\n"
      "  vexoctl --json usb list");
  command->callback([&settings] { PrintResult(DescribePrinters(ListUsbPrinters()), settings); });
}

}  // namespace vexoctl
