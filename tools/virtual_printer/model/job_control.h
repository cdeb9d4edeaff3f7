#ifndef VIRTUAL_PRINTER_MODEL_JOB_CONTROL_H_
#define VIRTUAL_PRINTER_MODEL_JOB_CONTROL_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// One connection's monitoring, task numbers and job commands.
class JobControl {
 public:
  // Inherits the monitoring that an earlier connection left on. The state must outlive the control.
  JobControl(int connection, PrinterState& state);

  // Returns nothing if the command does not concern jobs.
  std::optional<CommandResult> Execute(const Command& command, Time now);

  // Adds print data. Returns a description of the job that it belongs to; empty if it belongs to none.
  std::string AddPrintData(Time now);

  // The connection has ended. Its jobs go on, and another connection may inherit its monitoring.
  void Leave(Time now);

  // The family of the reports that the connection gets; nothing if it gets none.
  std::optional<ReportFamily> Reports() const { return monitoring_ ? std::optional(Family()) : std::nullopt; }

  // The family of the reports that the connection would get.
  ReportFamily Family() const { return FamilyOr(ReportFamily::kV1); }

 private:
  std::optional<CommandResult> ExecuteV1(const Command& command, Time now);
  CommandResult ExecuteGsH(std::string_view body, Time now);

  CommandResult SwitchOn(ReportFamily family, const std::string& description);
  CommandResult SwitchOff(const std::string& description, Time now);
  CommandResult SetNextTask(std::optional<std::string_view> digits, const std::string& description, Time now);
  CommandResult ResetNumbering(bool answer_wanted);
  CommandResult ClearTasks(ReportFamily command_family);

  // The family of the command decides while the host has not switched monitoring on.
  ReportFamily FamilyOr(ReportFamily command_family) const;

  const int connection_;
  PrinterState& state_;
  bool monitoring_ = false;
  std::optional<ReportFamily> family_;  // With which monitoring was last switched on.
  TaskNumber next_task_ = kNoTask;      // For the next job.
  TaskNumber current_task_ = kNoTask;   // Of this connection's last job.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_JOB_CONTROL_H_
