#include <cstdint>
#include <string>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/failure.h"
#include "vexoctl/job_monitor.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/value_text.h"

namespace vexoctl {
namespace {

struct Monitoring {
  std::string text;
  nlohmann::ordered_json json;
};

// Of the GS family, the library knows only what this very session has switched on.
Monitoring FindMonitoring(JobMonitor& monitor, const Settings& settings) {
  if (settings.family == Family::kGs) {
    return {"unknown (this family of printers cannot be asked)", nullptr};
  }
  bool on = false;
  Require(monitor.QueryWork(&on), "cannot read the job monitoring of " + settings.PrinterName());
  return {on ? "on" : "off", on};
}

void ShowStatus(const Settings& settings) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);
  JobMonitor monitor(session.handle(), settings);

  uint32_t status = 0;
  Require(GetDeviceStatus(monitor.get(), &status), "cannot read the status of " + settings.PrinterName());
  const Monitoring monitoring = FindMonitoring(monitor, settings);
  PrintResult({"status: " + ValueText(status) + "\nmonitoring: " + monitoring.text + "\n",
               {{"status", status}, {"monitoring", monitoring.json}}},
              settings);
}

}  // namespace

void AddStatusCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const status = tool.add_subcommand("status", "Read the printer's status, and whether it reports jobs");
  status->needs(tool.get_option(kPortOption));
  status->footer(
      "The status is the complement of what the printer sends, as the library gives it to hosts.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 status\n"
      "  vexoctl -p COM3,9600 --family gs --json status");
  status->callback([&settings] { ShowStatus(settings); });
}

}  // namespace vexoctl
