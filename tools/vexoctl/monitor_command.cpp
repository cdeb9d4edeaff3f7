#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "vexoctl/commands.h"
#include "vexoctl/error_words.h"
#include "vexoctl/interrupt.h"
#include "vexoctl/job_monitor.h"
#include "vexoctl/listening_limits.h"
#include "vexoctl/news.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/time_of_day.h"
#include "vexoctl/value_text.h"
#include "vexoctl/watched_port.h"

namespace vexoctl {
namespace {

constexpr std::chrono::seconds kPauseBeforeRetry(1);

Result DescribeEvent(const JobEvent& event) {
  const std::string time = TimeOfDay(event.time);
  const char* const word = event.ended ? "end" : "start";
  Result result;
  result.text = time + " " + word + " task " + std::to_string(event.task);
  if (event.ended) {
    result.text += " value " + ValueText(event.value);
  }
  result.text += "\n";
  result.json = {{"time", time}, {"event", word}, {"task", event.task}, {"value", event.value}};
  return result;
}

// One run of the command, from the opening of the work to its closing.
class MonitorRun {
 public:
  MonitorRun(const ListeningLimits& limits, const Settings& settings)
      : settings_(settings), events_left_(limits.events), session_(settings.descriptor) {
    session_.Open(settings.time_limit);
    port_.emplace(session_.handle());
    monitor_.emplace(session_.handle(), settings);
    monitor_->PostEvents();
    monitor_->OpenWork();
    if (limits.time) {
      end_ = std::chrono::steady_clock::now() + *limits.time;
    }
  }

  void Run() {
    PrintNote("listening to " + settings_.PrinterName(), settings_);
    while (!done_) {
      if (const std::optional<News> news = AllNews().Wait(NextLook())) {
        React(*news);
      } else if (IsOver()) {
        done_ = true;
      } else {
        Retry();
      }
    }
    if (connected_) {
      monitor_->CloseWork();
    }
  }

 private:
  std::optional<Deadline> NextLook() const {
    if (connected_) {
      return end_;
    }
    const Deadline retry = std::chrono::steady_clock::now() + kPauseBeforeRetry;
    return end_ && *end_ < retry ? *end_ : retry;
  }

  bool IsOver() const { return end_ && std::chrono::steady_clock::now() >= *end_; }

  void React(const News& news) {
    switch (news.kind) {
      case News::Kind::kJobEvent:
        PrintResult(DescribeEvent(news.event), settings_);
        done_ = events_left_ && --*events_left_ == 0;
        break;
      case News::Kind::kConnectionLost:
        PrintNote("lost the connection to " + settings_.PrinterName() + ": " + std::to_string(news.code) + " " +
                      ErrorWords(news.code),
                  settings_);
        connected_ = false;
        monitor_->AbandonWork();
        Retry();
        break;
      case News::Kind::kInterrupted:
        done_ = true;
        break;
      case News::Kind::kUsbEvent:
        break;  // Nobody watches for them here.
    }
  }

  // The port connects again for the command that switches monitoring on; a printer that was off needs that anyway.
  void Retry() {
    if (monitor_->ReopenWork() == VEXO_OK) {
      connected_ = true;
      PrintNote("connected to " + settings_.PrinterName() + " again; events in between may be missing", settings_);
    }
  }

  const Settings& settings_;
  std::optional<uint32_t> events_left_;
  std::optional<Deadline> end_;
  PrinterSession session_;
  std::optional<WatchedPort> port_;
  std::optional<JobMonitor> monitor_;
  bool connected_ = true;
  bool done_ = false;
};

void Monitor(const ListeningLimits& limits, const Settings& settings) {
  const InterruptWatch interrupts;
  MonitorRun(limits, settings).Run();
}

}  // namespace

void AddMonitorCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const command = tool.add_subcommand("monitor", "Show the start and end of each print job as they happen");
  command->needs(tool.get_option(kPortOption));
  const LimitOptions limits(command);
  command->footer(
      "A line for each event: the time, start or end, the task number, and for an end the\n"
      "value that the printer sends with it (status shows the complement of such a value).\n"
      "With --json, an object for each event.\n"
      "\n"
      "Switches the printer's job monitoring on and, unless it was on before, off again at\n"
      "the end: after Ctrl-C, --count or --for. All of these are success.\n"
      "\n"
      "When the connection is lost, a note says so, and the printer is tried again once a\n"
      "second until it is back. What its jobs did meanwhile is not shown. A printer that\n"
      "falls silent without closing the connection is noticed by the system only, after\n"
      "some seconds on a network and not at all on other ports. While no connection can be\n"
      "made, the end may be late by two connect limits (--timeout).\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 monitor\n"
      "  vexoctl -p NET,192.168.1.100 --json monitor --count 2\n"
      "  vexoctl -p COM3,9600 --family gs monitor --for 60000");
  command->callback([limits, &settings] { Monitor(limits.Read(), settings); });
}

}  // namespace vexoctl
