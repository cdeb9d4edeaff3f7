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

// One connection's hold on the printer's jobs: whether it is sent reports and in which manner, the numbers it gives its
// jobs, and what it asks and orders.
class JobControl {
 public:
  // Takes over the monitoring that an earlier connection left. The state must outlive the control.
  JobControl(int connection, PrinterState& state);

  // Nothing when the command is about something else.
  std::optional<Reaction> Execute(const Command& command, Time now);

  // Print data has arrived. Gives the words for the job that it belongs to; none when it belongs to no job.
  std::string AddPrintData(Time now);

  // The connection has ended. Its jobs go on, and its monitoring is left to another one.
  void Leave(Time now);

  // In what manner it is sent reports; nothing when it is not.
  std::optional<ReportFamily> Reports() const { return monitoring_ ? std::optional(Family()) : std::nullopt; }

  // In what manner it would be sent reports.
  ReportFamily Family() const { return FamilyOr(ReportFamily::kV1); }

 private:
  std::optional<Reaction> ExecuteV1(const Command& command, Time now);
  Reaction ExecuteGsH(std::string_view body, Time now);

  Reaction SwitchOn(ReportFamily asked_by, const std::string& words);
  Reaction SwitchOff(const std::string& words, Time now);
  Reaction SetNextTask(std::optional<std::string_view> digits, const std::string& words, Time now);
  Reaction ResetNumbering(bool answered);
  Reaction ClearTasks(ReportFamily asked_by);

  // A command comes in the manner of one family. It counts as long as the host has not switched monitoring on.
  ReportFamily FamilyOr(ReportFamily asked_by) const;

  const int connection_;
  PrinterState& state_;
  bool monitoring_ = false;
  std::optional<ReportFamily> family_;  // As monitoring was last switched on.
  TaskNumber next_task_ = kNoTask;      // Of the next job.
  TaskNumber current_task_ = kNoTask;   // Of the last job that data of this connection has made.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_JOB_CONTROL_H_
