#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/report.h"
#include "vexoctl/support/system_ports.h"

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
    AddPort(port + ",9600", "serial", "serial line; replace 9600 by the printer's speed", &result);
  }
  for (const std::string& port : ParallelPorts()) {
    AddPort(port, "parallel", "parallel port", &result);
  }
  for (const vexo::UsbPrinter& printer : UsbPrinters()) {
    const std::string name = printer.name.empty() ? printer.ids : printer.name;
    AddPort(printer.descriptor().empty() ? "USB" : printer.descriptor(), "usb", "USB printer " + name, &result);
  }
  if (result.text.empty()) {
    result.text = "no ports\n";
  }
  return result;
}

}  // namespace

void AddPortsCommand(CLI::App& tool, const Options& options) {
  CLI::App* const command = tool.add_subcommand("ports", "Show the serial, parallel and USB ports of this machine");
  command->footer(
      "Each line begins with the descriptor for -p. Whether a printer is connected to a serial\n"
      "or parallel port is not known. vexoctl scan finds printers on the network.\n"
      "Examples:\n"
      "  vexoctl ports\n"
      "  vexoctl --json ports");
  command->callback([&options] { PrintResult(DescribePorts(), options); });
}

}  // namespace vexoctl
