#include "vexoctl/commands.h"
#include "vexoctl/report.h"
#include "vexoctl/system_ports.h"
#include "vexoctl/usb_printers.h"

namespace vexoctl {
namespace {

void AddPort(const std::string& descriptor, const std::string& kind, const std::string& about, Result* result) {
  result->text += descriptor + "  " + about + "\n";
  result->json["ports"].push_back({{"descriptor", descriptor}, {"kind", kind}, {"about", about}});
}

Result DescribePorts() {
  Result result;
  result.json = {{"ports", nlohmann::ordered_json::array()}};
  for (const std::string& port : SerialPorts()) {
    AddPort(port + ",9600", "serial", "serial line; put the printer's speed in place of 9600", &result);
  }
  for (const std::string& port : ParallelPorts()) {
    AddPort(port, "parallel", "parallel port", &result);
  }
  for (const vexo::UsbPrinter& printer : ListUsbPrinters()) {
    const std::string name = printer.name.empty() ? printer.ids : printer.name;
    AddPort(printer.descriptor().empty() ? "USB" : printer.descriptor(), "usb", "USB printer " + name, &result);
  }
  if (result.text.empty()) {
    result.text = "no ports\n";
  }
  return result;
}

}  // namespace

void AddPortsCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const command = tool.add_subcommand("ports", "Show the serial, parallel and USB ports of this machine");
  command->footer(
      "Each line begins with the descriptor to give as -p. Whether a printer is connected to a\n"
      "serial or parallel port is not known. Printers on the network are found by vexoctl scan.\n"
      "Examples:\n"
      "  vexoctl ports\n"
      "  vexoctl --json ports");
  command->callback([&settings] { PrintResult(DescribePorts(), settings); });
}

}  // namespace vexoctl
