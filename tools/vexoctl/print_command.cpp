#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vexoctl/commands.h"
#include "vexoctl/failure.h"
#include "vexoctl/interrupt.h"
#include "vexoctl/job_file.h"
#include "vexoctl/print_job.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/task_number.h"
#include "vexoctl/value_text.h"
#include "vexoctl/watched_port.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

constexpr uint32_t kDefaultWait = 60000;
constexpr uint32_t kLongestWait = 86400000;

// Of a job that is awaited, the two lines of text come as things happen; as JSON it is one object at the end.
class PrintReport {
 public:
  explicit PrintReport(const Settings& settings) : settings_(settings) {}

  void AddSent(uint32_t task, uint64_t bytes) {
    json_ = {{"task", task}, {"bytes", bytes}};
    AddLine("task " + std::to_string(task) + " sent, " + std::to_string(bytes) + " bytes\n");
  }

  void AddEnd(uint32_t task, uint32_t value) {
    json_["value"] = value;
    AddLine("task " + std::to_string(task) + " ended, value " + ValueText(value) + "\n");
  }

  void Finish() {
    if (settings_.json) {
      PrintResult({{}, json_}, settings_);
    }
  }

 private:
  void AddLine(const std::string& line) {
    if (!settings_.json) {
      PrintResult({line, {}}, settings_);
    }
  }

  const Settings& settings_;
  nlohmann::ordered_json json_;
};

// @param wait_limit in milliseconds; the end of the job is not awaited when empty.
void PrintFile(const std::string& name, uint32_t task, std::optional<uint32_t> wait_limit, const Settings& settings) {
  JobFile file(name);
  // Before the printer is bothered: a program at the other end of a pipe may still be at work. And an empty job is none
  // to a printer, so its end would never come.
  std::vector<uint8_t> first = file.Read();
  if (first.empty()) {
    throw Failure("nothing to print in " + file.name(), ERROR_HANDLE_EOF);
  }
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);
  const InterruptWatch interrupts;
  const WatchedPort port(session.handle());
  PrintJob job(session.handle(), task, settings);
  PrintReport report(settings);
  report.AddSent(task, job.Send(std::move(first), file));
  if (wait_limit) {
    report.AddEnd(task, job.AwaitEnd(*wait_limit));
  }
  job.Finish();
  report.Finish();
}

}  // namespace

void AddPrintCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const print = tool.add_subcommand("print", "Send a file to the printer as a job with a task number");
  print->needs(tool.get_option(kPortOption));
  CLI::Option* const file = print->add_option("FILE")->required()->description("File of print data; - for the input");
  CLI::Option* const task = print->add_option("--task")->required()->type_name("N");
  task->description("Task number, 1 to 9999")->transform(WholeNumber(kLowestTask, kHighestTask));
  CLI::Option* const wait = print->add_flag("--wait")->description("Wait until the printer reports the end of the job");
  CLI::Option* const limit = print->add_option("--wait-limit")->type_name("MS")->needs(wait);
  limit->description("How long to wait, counted from the last byte sent; default: " + std::to_string(kDefaultWait));
  limit->transform(WholeNumber(1, kLongestWait));
  print->footer(
      "The bytes are sent as they are. Switches the printer's job monitoring on and, unless\n"
      "it was on before, off again at the end.\n"
      "\n"
      "With --wait, the value is what the printer sends with the end of the job. It is a\n"
      "failure when the end does not come in time or the connection is lost before.\n"
      "A printer that takes no data for the port's write limit has failed, too; a slow one\n"
      "may need a longer --timeout.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 print receipt.bin --task 7 --wait\n"
      "  vexoctl -p USB print receipt.bin --task 8 --wait --wait-limit 10000\n"
      "  make_receipt | vexoctl -p NET,192.168.1.100 print - --task 9");
  print->callback([file, task, wait, limit, &settings] {
    std::optional<uint32_t> wait_limit;
    if (wait->count() > 0) {
      wait_limit = limit->count() > 0 ? limit->as<uint32_t>() : kDefaultWait;
    }
    PrintFile(file->as<std::string>(), task->as<uint32_t>(), wait_limit, settings);
  });
}

}  // namespace vexoctl
