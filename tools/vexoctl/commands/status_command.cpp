#include <cstdint>
#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/monitoring.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

struct MonitoringState {
  std::string text;
  nlohmann::ordered_json json;
};

// Printers of the GS family cannot be asked.
MonitoringState ReadMonitoringState(JobMonitoring& monitoring, const Options& options) {
  if (options.family == vexo::JobMonitor::Family::kGs) {
    return {"unknown (this family of printers cannot be asked)", nullptr};
  }
  const bool on = monitoring.IsOn();
  return {on ? "on" : "off", on};
}

void ShowStatus(const Options& options) {
  vexo::Printer printer = OpenPrinter(options);
  JobMonitoring monitoring(printer, options);
  std::error_code error;
  const uint32_t status = ~monitoring.monitor().GetStatus(&error);
  Require(error, "cannot read the status of " + options.PrinterName());
  const MonitoringState state = ReadMonitoringState(monitoring, options);
  PrintResult({"status: " + ValueText(status) + "\nmonitoring: " + state.text + "\n",
               {{"status", status}, {"monitoring", state.json}}},
              options);
}

}  // namespace

void AddStatusCommand(CLI::App& tool, const Options& options) {
  CLI::App* const status = tool.add_subcommand("status", "Show the printer's status, and whether job monitoring is on");
  status->needs(tool.get_option(kPortOption));
  status->footer(
      "The status is the complement of the value that the printer sends, as GetDeviceStatus gives it.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 status\n"
      "  vexoctl -p COM3,9600 --family gs --json status");
  status->callback([&options] { ShowStatus(options); });
}

}  // namespace vexoctl
