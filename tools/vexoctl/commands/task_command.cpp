#include <chrono>
#include <cstdint>
#include <string>
#include <system_error>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/monitoring.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

constexpr uint32_t kLongestListeningMs = 3600000;

constexpr char kMonitoringHelp[] =
    "Needs the printer's job monitoring: it is switched on first and, unless it was on\n"
    "before, off again at the end.\n";

// Calls `operation(monitor, &error)` while job monitoring is on.
template <typename Operation>
void RunWhileMonitoring(const Options& options, const std::string& failure, Operation operation) {
  vexo::Printer printer = OpenPrinter(options);
  JobMonitoring monitoring(printer, options);
  monitoring.SwitchOn();
  std::error_code error;
  operation(monitoring.monitor(), &error);
  Require(error, failure + options.PrinterName());
  monitoring.Restore();
}

void SetTask(int32_t task, const Options& options) {
  RunWhileMonitoring(options, "cannot set the task number of ",
                     [task](vexo::JobMonitor& monitor, std::error_code* error) { monitor.SetTask(task, error); });
  PrintResult({"task " + std::to_string(task) + " set\n", {{"task", task}}}, options);
}

void ClearTasks(const Options& options) {
  RunWhileMonitoring(options, "cannot clear the tasks of ",
                     [](vexo::JobMonitor& monitor, std::error_code* error) { monitor.ClearTasks(error); });
  PrintResult({"tasks cleared\n", {{"cleared", true}}}, options);
}

void ResetTasks(const Options& options) {
  RunWhileMonitoring(options, "cannot reset the task numbers of ",
                     [](vexo::JobMonitor& monitor, std::error_code* error) { monitor.ResetTaskNumbers(error); });
  PrintResult({"task numbers reset\n", {{"reset", true}}}, options);
}

void ShowFinishedTasks(std::chrono::milliseconds time, const Options& options) {
  vexo::Printer printer = OpenPrinter(options);
  std::error_code error;
  Result result;
  result.json["texts"] = nlohmann::ordered_json::array();
  for (const std::string& text : vexo::ReadTaskOverInfo(printer, time, &error)) {
    result.text += Utf8FromPrinter(text) + "\n";
    result.json["texts"].push_back(Utf8FromPrinter(text));
  }
  Require(error, "cannot receive texts about finished tasks from " + options.PrinterName());
  PrintResult(result, options);
}

void AddTaskSet(CLI::App& task, const Options& options) {
  CLI::App* const set = task.add_subcommand("set", "Give the next job a task number");
  CLI::Option* const number =
      set->add_option("N")->required()->transform(WholeNumber(VEXO_TASK_LOWEST, VEXO_TASK_HIGHEST));
  number->description("Task number, 1 to 9999");
  set->footer(std::string(kMonitoringHelp) +
              "The printer does not confirm the number, and it may forget it when monitoring goes\n"
              "off or the connection ends. To print a file under a number, use print.\n"
              "Example:\n"
              "  vexoctl -p NET,192.168.1.100 task set 7");
  set->callback([number, &options] { SetTask(number->as<int32_t>(), options); });
}

void AddTaskClear(CLI::App& task, const Options& options) {
  CLI::App* const clear = task.add_subcommand("clear", "Make the printer drop its pending tasks");
  clear->footer(std::string(kMonitoringHelp) +
                "Example:\n"
                "  vexoctl -p NET,192.168.1.100 task clear");
  clear->callback([&options] { ClearTasks(options); });
}

void AddTaskReset(CLI::App& task, const Options& options) {
  CLI::App* const reset = task.add_subcommand("reset", "Make the printer number its tasks anew");
  reset->footer(std::string(kMonitoringHelp) +
                "Example:\n"
                "  vexoctl -p NET,192.168.1.100 --family gs task reset");
  reset->callback([&options] { ResetTasks(options); });
}

void AddTaskWait(CLI::App& task, const Options& options) {
  CLI::App* const wait = task.add_subcommand("wait", "Print the texts that the printer sends about finished tasks");
  CLI::Option* const time = wait->add_option("MS")->required()->transform(WholeNumber(0, kLongestListeningMs));
  time->description("How long to listen, in milliseconds; one more read may follow");
  wait->footer(
      "One text a line. It is a failure if the printer sends nothing.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 task wait 5000");
  wait->callback([time, &options] { ShowFinishedTasks(std::chrono::milliseconds(time->as<uint32_t>()), options); });
}

}  // namespace

void AddTaskCommand(CLI::App& tool, const Options& options) {
  CLI::App* const task = tool.add_subcommand("task", "Number print tasks, clear them, or wait for them");
  task->require_subcommand(1);
  task->needs(tool.get_option(kPortOption));
  task->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 task set 7\n"
      "  vexoctl -p NET,192.168.1.100 task wait 5000");
  AddTaskSet(*task, options);
  AddTaskClear(*task, options);
  AddTaskReset(*task, options);
  AddTaskWait(*task, options);
}

}  // namespace vexoctl
