#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"
#include "vexoctl/job_monitor.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/task_number.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

constexpr uint32_t kLongestListening = 3600000;

constexpr char kWorkHelp[] =
    "Needs the printer's job monitoring: it is switched on first and, unless it was on\n"
    "before, off again at the end.\n";

// Runs `action`, which takes the monitor object and gives a result of the library, with the work open.
template <typename Action>
void WithOpenWork(const Settings& settings, const std::string& failure, Action action) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);
  JobMonitor monitor(session.handle(), settings);
  monitor.OpenWork();
  Require(action(monitor.get()), failure + settings.PrinterName());
  monitor.CloseWork();
}

void SetTask(uint32_t task, const Settings& settings) {
  WithOpenWork(settings, "cannot set the task number of ",
               [task](CVEXOPrinterReadHelper* monitor) { return SetPrintTaskId(monitor, static_cast<int32_t>(task)); });
  PrintResult({"task " + std::to_string(task) + " set\n", {{"task", task}}}, settings);
}

void ClearTasks(const Settings& settings) {
  WithOpenWork(settings, "cannot clear the tasks of ", SetClearPrintTask);
  PrintResult({"tasks cleared\n", {{"cleared", true}}}, settings);
}

void ResetTasks(const Settings& settings) {
  constexpr uint32_t kAwaitAnswer = 1;
  WithOpenWork(settings, "cannot reset the task numbers of ",
               [](CVEXOPrinterReadHelper* monitor) { return ResetPrinterInteriorId(monitor, kAwaitAnswer); });
  PrintResult({"task numbers reset\n", {{"reset", true}}}, settings);
}

// Splits at "|", which the library puts between the texts of several replies.
std::vector<std::string> SplitTexts(std::string_view texts) {
  std::vector<std::string> parts;
  while (!texts.empty()) {
    const std::string_view part = texts.substr(0, texts.find('|'));
    parts.push_back(Utf8FromPrinter(part));
    texts.remove_prefix(std::min(part.size() + 1, texts.size()));
  }
  return parts;
}

// The library hears at most 256 bytes in every 20 ms; some more are for the first and the last moment.
size_t LongestTexts(uint32_t milliseconds) { return (milliseconds / 20 + 3) * size_t{256}; }

void WaitForTasks(uint32_t milliseconds, const Settings& settings) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);

  constexpr uint32_t kNothing = std::numeric_limits<uint32_t>::max();
  std::vector<char> texts(LongestTexts(milliseconds));
  uint32_t length = kNothing;
  Require(GetPrinterTaskOverInfo(session.handle(), static_cast<int32_t>(milliseconds), texts.data(),
                                 static_cast<uint32_t>(texts.size()), &length),
          "cannot hear about finished tasks from " + settings.PrinterName());
  // A printer that closed the connection and took a new one is no failure to the library, but said nothing.
  if (length == kNothing) {
    throw Failure("nothing about finished tasks from " + settings.PrinterName(), VEXO_ERROR_IO_READ);
  }
  Result result;
  result.json["texts"] = nlohmann::ordered_json::array();
  for (const std::string& text : SplitTexts({texts.data(), length})) {
    result.text += text + "\n";
    result.json["texts"].push_back(text);
  }
  PrintResult(result, settings);
}

void AddSetCommand(CLI::App& task, const Settings& settings) {
  CLI::App* const set = task.add_subcommand("set", "Give the next job a task number");
  CLI::Option* const number = set->add_option("N")->required()->transform(WholeNumber(kLowestTask, kHighestTask));
  number->description("Task number, 1 to 9999");
  set->footer(std::string(kWorkHelp) +
              "The printer does not confirm the number, and it may forget it when monitoring goes\n"
              "off or the connection ends. To print a file under a number, use print.\n"
              "Example:\n"
              "  vexoctl -p NET,192.168.1.100 task set 7");
  set->callback([number, &settings] { SetTask(number->as<uint32_t>(), settings); });
}

void AddClearCommand(CLI::App& task, const Settings& settings) {
  CLI::App* const clear = task.add_subcommand("clear", "Make the printer drop its pending tasks");
  clear->footer(std::string(kWorkHelp) +
                "Example:\n"
                "  vexoctl -p NET,192.168.1.100 task clear");
  clear->callback([&settings] { ClearTasks(settings); });
}

void AddResetCommand(CLI::App& task, const Settings& settings) {
  CLI::App* const reset = task.add_subcommand("reset", "Make the printer number its tasks anew");
  reset->footer(std::string(kWorkHelp) +
                "Example:\n"
                "  vexoctl -p NET,192.168.1.100 --family gs task reset");
  reset->callback([&settings] { ResetTasks(settings); });
}

void AddWaitCommand(CLI::App& task, const Settings& settings) {
  CLI::App* const wait = task.add_subcommand("wait", "Print what the printer says about finished tasks");
  CLI::Option* const time = wait->add_option("MS")->required()->transform(WholeNumber(0, kLongestListening));
  time->description("How long to listen, in milliseconds; one more read may follow");
  wait->footer(
      "Each text has a line of its own. A printer that says nothing at all is a failure.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 task wait 5000");
  wait->callback([time, &settings] { WaitForTasks(time->as<uint32_t>(), settings); });
}

}  // namespace

void AddTaskCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const task = tool.add_subcommand("task", "Number, clear and await print tasks");
  task->require_subcommand(1);
  task->needs(tool.get_option(kPortOption));
  task->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 task set 7\n"
      "  vexoctl -p NET,192.168.1.100 task wait 5000");
  AddSetCommand(*task, settings);
  AddClearCommand(*task, settings);
  AddResetCommand(*task, settings);
  AddWaitCommand(*task, settings);
}

}  // namespace vexoctl
