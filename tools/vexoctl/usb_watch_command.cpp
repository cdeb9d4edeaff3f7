#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

#include "vexo/printer.hpp"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"
#include "vexoctl/interrupt.h"
#include "vexoctl/listening_limits.h"
#include "vexoctl/news.h"
#include "vexoctl/report.h"
#include "vexoctl/time_of_day.h"
#include "vexoctl/usb_commands.h"

namespace vexoctl {
namespace {

Result DescribeEvent(const UsbEvent& event) {
  const std::string time = TimeOfDay(event.time);
  const std::string device = Utf8FromPrinter(event.device);
  const char* const word = event.removed ? "removed" : "arrived";
  Result result;
  result.text = time + " " + word + " " + device + "\n";
  result.json = {{"time", time}, {"event", word}, {"device", device}};
  return result;
}

void Watch(ListeningLimits limits, const Settings& settings) {
  const InterruptWatch interrupts;
  std::error_code error;
  const vexo::UsbWatch watch(PostUsbEvent, &error);
  Require(error.value(), "cannot watch for USB printers");
  std::optional<Deadline> end;
  if (limits.time) {
    end = std::chrono::steady_clock::now() + *limits.time;
  }
  PrintNote("watching for USB printers", settings);
  while (!limits.events || *limits.events > 0) {
    const std::optional<News> news = AllNews().Wait(end);
    if (!news || news->kind == News::Kind::kInterrupted) {
      return;
    }
    PrintResult(DescribeEvent(news->usb), settings);
    if (limits.events) {
      --*limits.events;
    }
  }
}

}  // namespace

void AddUsbWatchCommand(CLI::App& usb, const Settings& settings) {
  CLI::App* const command = usb.add_subcommand("watch", "Show USB printers as they are plugged in and removed");
  const LimitOptions limits(command);
  command->footer(
      "A line for each event: the time, arrived or removed, and the instance part of the\n"
      "device's path, in capitals: the serial number of a printer that has one, otherwise a\n"
      "text that the system made up. With --json, an object for each event. Printers that\n"
      "are there already are not shown.\n"
      "\n"
      "Ends after Ctrl-C, --count or --for. All of these are success.\n"
      "Examples:\n"
      "  vexoctl usb watch\n"
      "  vexoctl --json usb watch --for 60000");
  command->callback([limits, &settings] { Watch(limits.Read(), settings); });
}

}  // namespace vexoctl
