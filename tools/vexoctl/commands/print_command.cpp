#include <windows.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/interrupt.h"
#include "vexoctl/console/progress.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/connection_watch.h"
#include "vexoctl/support/events.h"
#include "vexoctl/support/input_file.h"
#include "vexoctl/support/monitoring.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

using std::chrono::milliseconds;

constexpr uint32_t kDefaultWaitMs = 60000;
constexpr uint32_t kLongestWaitMs = 86400000;

// A job with a task number. Its connection is watched (connection_watch.h), and interrupts are events (events.h).
class PrintJob {
 public:
  // Switches job monitoring on and announces the job. Throws a Failure.
  PrintJob(vexo::Printer& printer, int32_t task, const Options& options)
      : printer_(printer),
        task_(task),
        printer_name_(options.PrinterName()),
        task_name_("task " + std::to_string(task)),
        monitoring_(printer, options) {
    monitoring_.PostEvents();
    monitoring_.SwitchOn();
    std::error_code error;
    monitoring_.monitor().SetTask(task, &error);
    Require(error, "cannot announce " + task_name_ + " to " + printer_name_);
  }

  // Sends a file, whose first piece has been read already. Throws a Failure unless the printer took everything.
  // Returns the number of bytes sent.
  uint64_t Send(std::string first_piece, InputStream& file) {
    ByteProgress progress(file.size());
    for (std::string piece = std::move(first_piece); !piece.empty(); piece = file.Read()) {
      while (const std::optional<Event> event = Events().Take()) {
        Handle(*event);
      }
      SendPiece(piece, file.name());
      progress.Show(sent_);
    }
    return sent_;
  }

  // Waits until the printer reports the end of the job. Throws a Failure if that does not happen in time.
  // Returns the value that the printer sends with the end.
  uint32_t AwaitEnd(milliseconds limit) {
    const Deadline deadline = std::chrono::steady_clock::now() + limit;
    while (!end_value_) {
      const std::optional<Event> event = Events().Wait(deadline);
      if (!event) {
        throw Failure(
            task_name_ + " has not ended on " + printer_name_ + " after " + std::to_string(limit.count()) + " ms",
            ERROR_TIMEOUT);
      }
      Handle(*event);
    }
    return *end_value_;
  }

  // Leaves job monitoring as it was. Throws a Failure.
  void Finish() { monitoring_.Restore(); }

 private:
  void SendPiece(const std::string& piece, const std::string& file_name) {
    std::error_code error;
    sent_ += printer_.WriteAll(piece, &error);
    if (error && error.value() != VEXO_ERROR_IO_WRITE_TIMEOUT) {
      monitoring_.Abandon();
    }
    Require(error, "cannot send all of " + file_name + " to " + printer_name_ + ", " + std::to_string(sent_) +
                       " bytes were sent");
  }

  void Handle(const Event& event) {
    switch (event.kind) {
      case Event::Kind::kJob:
        if (event.job.ended && event.job.task == task_) {
          end_value_ = event.job.value;
        }
        break;
      case Event::Kind::kConnectionLost:
        monitoring_.Abandon();
        throw Failure("lost the connection to " + printer_name_ + " before the end of " + task_name_, event.port_error);
      case Event::Kind::kInterrupt:
        throw Failure("stopped before the end of " + task_name_, ERROR_CANCELLED);
      case Event::Kind::kUsbPrinter:
        break;  // Not watched here.
    }
  }

  vexo::Printer& printer_;
  const int32_t task_;
  const std::string printer_name_;
  const std::string task_name_;  // "task 7".
  JobMonitoring monitoring_;
  uint64_t sent_ = 0;
  std::optional<uint32_t> end_value_;
};

// Prints each line as soon as it is known; as JSON, one object at the end.
class PrintReport {
 public:
  explicit PrintReport(const Options& options) : options_(options) {}

  void AddSent(int32_t task, uint64_t bytes) {
    json_ = {{"task", task}, {"bytes", bytes}};
    AddLine("task " + std::to_string(task) + " sent, " + std::to_string(bytes) + " bytes\n");
  }

  void AddEnd(int32_t task, uint32_t value) {
    json_["value"] = value;
    AddLine("task " + std::to_string(task) + " ended, value " + ValueText(value) + "\n");
  }

  void Finish() {
    if (options_.json) {
      PrintResult({{}, json_}, options_);
    }
  }

 private:
  void AddLine(const std::string& line) {
    if (!options_.json) {
      PrintResult({line, {}}, options_);
    }
  }

  const Options& options_;
  nlohmann::ordered_json json_;
};

// @param wait_limit empty: do not wait for the end of the job.
void PrintFile(const std::string& name, int32_t task, std::optional<milliseconds> wait_limit, const Options& options) {
  InputStream file(name);
  // Read before the printer is opened: a program at the other end of a pipe may take its time. And a printer does not
  // report the end of an empty job.
  std::string first_piece = file.Read();
  if (first_piece.empty()) {
    throw Failure("nothing to print in " + file.name(), ERROR_HANDLE_EOF);
  }
  vexo::Printer printer = OpenPrinter(options);
  const InterruptWatch interrupts(PostInterrupt);
  const ConnectionWatch connection(printer.handle());
  PrintJob job(printer, task, options);
  PrintReport report(options);
  report.AddSent(task, job.Send(std::move(first_piece), file));
  if (wait_limit) {
    report.AddEnd(task, job.AwaitEnd(*wait_limit));
  }
  job.Finish();
  report.Finish();
}

}  // namespace

void AddPrintCommand(CLI::App& tool, const Options& options) {
  CLI::App* const print = tool.add_subcommand("print", "Send a file to the printer as a job with a task number");
  print->needs(tool.get_option(kPortOption));
  CLI::Option* const file = print->add_option("FILE")->required();
  file->description("File of print data; - for the standard input");
  CLI::Option* const task = print->add_option("--task")->required()->type_name("N");
  task->description("Task number, 1 to 9999")->transform(WholeNumber(VEXO_TASK_LOWEST, VEXO_TASK_HIGHEST));
  CLI::Option* const wait = print->add_flag("--wait")->description("Wait until the printer reports the end of the job");
  CLI::Option* const limit = print->add_option("--wait-limit")->type_name("MS")->needs(wait);
  limit->description("How long to wait after the last byte was sent; default: " + std::to_string(kDefaultWaitMs));
  limit->transform(WholeNumber(1, kLongestWaitMs));
  print->footer(
      "The bytes are sent as they are. Switches the printer's job monitoring on and, unless\n"
      "it was on before, off again at the end.\n"
      "\n"
      "With --wait, the value is what the printer sends with the end of the job. It is a\n"
      "failure if the end is not reported in time or the connection is lost before, or if the\n"
      "printer takes no data for the port's write limit; a slow one may need a longer --timeout.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 print receipt.bin --task 7 --wait\n"
      "  vexoctl -p USB print receipt.bin --task 8 --wait --wait-limit 10000\n"
      "  make_receipt | vexoctl -p NET,192.168.1.100 print - --task 9");
  print->callback([file, task, wait, limit, &options] {
    std::optional<milliseconds> wait_limit;
    if (wait->count() > 0) {
      wait_limit = milliseconds(limit->count() > 0 ? limit->as<uint32_t>() : kDefaultWaitMs);
    }
    PrintFile(file->as<std::string>(), task->as<int32_t>(), wait_limit, options);
  });
}

}  // namespace vexoctl
