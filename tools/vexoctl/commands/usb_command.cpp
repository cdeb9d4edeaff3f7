#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "vexo/printer.hpp"
#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/interrupt.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/events.h"
#include "vexoctl/support/system_ports.h"

namespace vexoctl {
namespace {

std::string OrUnknown(const std::string& text) { return text.empty() ? "unknown" : text; }

nlohmann::ordered_json OrNull(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

Result DescribeUsbPrinters(const std::vector<vexo::UsbPrinter>& printers) {
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

Result DescribeUsbEvent(const Event& event) {
  const std::string time = TimeOfDay(event.time);
  const std::string device = Utf8FromPrinter(event.usb_device);
  const char* const name = event.usb_removed ? "removed" : "arrived";
  return {time + " " + name + " " + device + "\n", {{"time", time}, {"event", name}, {"device", device}}};
}

void WatchUsbPrinters(EventLimits limits, const Options& options) {
  const InterruptWatch interrupts(PostInterrupt);
  std::error_code error;
  const vexo::UsbWatch watch(PostUsbEvent, &error);
  Require(error, "cannot watch for USB printers");
  limits.Start();
  PrintNote("watching for USB printers", options);
  for (bool last = false; !last; last = limits.CountEvent()) {
    const std::optional<Event> event = Events().Wait(limits.end());
    if (!event || event->kind == Event::Kind::kInterrupt) {
      return;
    }
    PrintResult(DescribeUsbEvent(*event), options);
  }
}

void AddUsbList(CLI::App& usb, const Options& options) {
  CLI::App* const command = usb.add_subcommand("list", "Show the USB printers that are connected");
  command->footer(
      "Each printer begins with its descriptor for -p. Printers of other makers are shown when\n"
      "the current directory holds a file vidpid_cfg.txt.\n"
      "Examples:\n"
      "  vexoctl usb list\n"
      "  vexoctl --json usb list");
  command->callback([&options] { PrintResult(DescribeUsbPrinters(UsbPrinters()), options); });
}

void AddUsbWatch(CLI::App& usb, const Options& options) {
  CLI::App* const command = usb.add_subcommand("watch", "Show USB printers as they are plugged in and removed");
  const EventLimitOptions limits(command);
  command->footer(
      "A line for each event: the time, arrived or removed, and the instance part of the\n"
      "device's path, in capitals: the printer's serial number or, if it has none, a text made\n"
      "by the system. With --json, an object for each event. Printers that are connected\n"
      "already are not shown.\n"
      "\n"
      "Ends after Ctrl-C, --count or --for. All of these are success.\n"
      "Examples:\n"
      "  vexoctl usb watch\n"
      "  vexoctl --json usb watch --for 60000");
  command->callback([limits, &options] { WatchUsbPrinters(limits.Read(), options); });
}

}  // namespace

void AddUsbCommand(CLI::App& tool, const Options& options) {
  CLI::App* const usb = tool.add_subcommand("usb", "List USB printers, or watch for them");
  usb->require_subcommand(1);
  usb->footer(
      "Examples:\n"
      "  vexoctl usb list\n"
      "  vexoctl usb watch");
  AddUsbList(*usb, options);
  AddUsbWatch(*usb, options);
}

}  // namespace vexoctl
