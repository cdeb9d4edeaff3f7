#include <algorithm>
#include <chrono>
#include <optional>
#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/interrupt.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/connection_watch.h"
#include "vexoctl/support/events.h"
#include "vexoctl/support/monitoring.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

Result DescribeJobEvent(const Event& event) {
  const vexo::JobEvent& job = event.job;
  const std::string time = TimeOfDay(event.time);
  const std::string name = job.ended ? "end" : "start";
  const std::string value = job.ended ? " value " + ValueText(job.value) : "";
  return {time + " " + name + " task " + std::to_string(job.task) + value + "\n",
          {{"time", time}, {"event", name}, {"task", job.task}, {"value", job.value}}};
}

// Shows job events until the limits, an interrupt, or a failure. After a lost connection it reconnects.
class MonitorRun {
 public:
  MonitorRun(const EventLimits& limits, const Options& options)
      : options_(options),
        limits_(limits),
        printer_(OpenPrinter(options)),
        connection_(printer_.handle()),
        monitoring_(printer_, options) {
    monitoring_.PostEvents();
    monitoring_.SwitchOn();
    limits_.Start();
  }

  void Run() {
    PrintNote("listening to " + options_.PrinterName(), options_);
    while (!done_) {
      if (const std::optional<Event> event = Events().Wait(NextDeadline())) {
        Handle(*event);
      } else if (limits_.IsOver()) {
        done_ = true;
      } else {
        Reconnect();
      }
    }
    if (connected_) {
      monitoring_.Restore();
    }
  }

 private:
  std::optional<Deadline> NextDeadline() const {
    constexpr std::chrono::seconds kPauseBeforeRetry(1);
    if (connected_) {
      return limits_.end();
    }
    const Deadline retry = std::chrono::steady_clock::now() + kPauseBeforeRetry;
    return std::min(retry, limits_.end().value_or(retry));
  }

  void Handle(const Event& event) {
    switch (event.kind) {
      case Event::Kind::kJob:
        PrintResult(DescribeJobEvent(event), options_);
        done_ = limits_.CountEvent();
        break;
      case Event::Kind::kConnectionLost:
        PrintNote("lost the connection to " + options_.PrinterName() + ": " + std::to_string(event.port_error) + " " +
                      ErrorText(event.port_error),
                  options_);
        connected_ = false;
        monitoring_.Abandon();
        Reconnect();
        break;
      case Event::Kind::kInterrupt:
        done_ = true;
        break;
      case Event::Kind::kUsbPrinter:
        break;  // Not watched here.
    }
  }

  // The port reconnects for the command. A printer that was switched off needs the command anyway.
  void Reconnect() {
    if (monitoring_.SwitchOnAgain()) {
      connected_ = true;
      PrintNote("connected to " + options_.PrinterName() + " again; events in between may be missing", options_);
    }
  }

  const Options& options_;
  EventLimits limits_;
  vexo::Printer printer_;
  ConnectionWatch connection_;
  JobMonitoring monitoring_;
  bool connected_ = true;
  bool done_ = false;
};

void ShowJobEvents(const EventLimits& limits, const Options& options) {
  const InterruptWatch interrupts(PostInterrupt);
  MonitorRun(limits, options).Run();
}

}  // namespace

void AddMonitorCommand(CLI::App& tool, const Options& options) {
  CLI::App* const command = tool.add_subcommand("monitor", "Show the start and end of each print job as they happen");
  command->needs(tool.get_option(kPortOption));
  const EventLimitOptions limits(command);
  command->footer(
      "A line for each event: the time, start or end, the task number, and for an end the\n"
      "value that the printer sends with it (status shows the complement of such a value).\n"
      "With --json, an object for each event.\n"
      "\n"
      "Switches the printer's job monitoring on and, unless it was on before, off again at\n"
      "the end: after Ctrl-C, --count or --for. All of these are success.\n"
      "\n"
      "After a lost connection it writes a note and tries to reconnect once a second. Events\n"
      "in between are not shown. A printer that goes silent without closing the connection is\n"
      "noticed after some seconds on a network, and not at all on other ports. While no\n"
      "connection can be made, the end may be late by two connect limits (--timeout).\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 monitor\n"
      "  vexoctl -p NET,192.168.1.100 --json monitor --count 2\n"
      "  vexoctl -p COM3,9600 --family gs monitor --for 60000");
  command->callback([limits, &options] { ShowJobEvents(limits.Read(), options); });
}

}  // namespace vexoctl
