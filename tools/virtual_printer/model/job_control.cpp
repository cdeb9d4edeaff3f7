#include "virtual_printer/model/job_control.h"

#include <utility>

namespace virtual_printer {
namespace {

// The bodies of GS ( H commands.
constexpr std::string_view kMonitoringOn = "102";
constexpr std::string_view kMonitoringOff = "100";
constexpr std::string_view kTaskNumber = "00";  // Four digits follow.
constexpr std::size_t kTaskNumberLength = 6;
constexpr std::string_view kReset = "200";
constexpr std::string_view kResetWithAnswer = "200\n";

constexpr std::string_view kSetTask = "\"process_id\" ";

// Returns the text between the quotes; nothing unless the whole text is quoted.
std::optional<std::string_view> Unquoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
    return std::nullopt;
  }
  return text.substr(1, text.size() - 2);
}

}  // namespace

JobControl::JobControl(int connection, PrinterState& state) : connection_(connection), state_(state) {
  family_ = state_.inherited_monitoring.Inherit();
  if (family_) {
    monitoring_ = true;
    ++state_.monitoring_hosts;
  }
}

std::optional<CommandResult> JobControl::Execute(const Command& command, Time now) {
  switch (command.kind) {
    case Command::Kind::kV1:
      return ExecuteV1(command, now);
    case Command::Kind::kGsH:
      return ExecuteGsH(AsText(command.record), now);
    case Command::Kind::kClearTasks:
      return ClearTasks(ReportFamily::kV1);
    case Command::Kind::kClearTasksRealTime:
      return ClearTasks(ReportFamily::kGsH);
    case Command::Kind::kFileMode:
    case Command::Kind::kLoaderMode:
    case Command::Kind::kNetworkDetails:
      break;
  }
  return std::nullopt;
}

std::optional<CommandResult> JobControl::ExecuteV1(const Command& command, Time now) {
  const std::string description = LineText(command);
  const std::string_view arguments = command.arguments;
  if (command.verb == "setval") {
    if (arguments == "\"job_monitor\" \"on\"") {
      return SwitchOn(ReportFamily::kV1, description);
    }
    if (arguments == "\"job_monitor\" \"off\"") {
      return SwitchOff(description, now);
    }
    if (arguments.substr(0, kSetTask.size()) == kSetTask) {
      return SetNextTask(Unquoted(arguments.substr(kSetTask.size())), description, now);
    }
  } else if (command.verb == "getval") {
    if (arguments == "\"job_monitor\"") {
      return CommandResult{description, MonitoringState(monitoring_)};
    }
    if (arguments == "\"reprint_status\"") {
      return CommandResult{description, StatusAnswer(state_.status)};
    }
  } else if (command.verb == "do" && arguments == "\"print_feedform\"") {
    return CommandResult{description + ", paper fed"};
  }
  return std::nullopt;
}

CommandResult JobControl::ExecuteGsH(std::string_view body, Time now) {
  if (body == kMonitoringOn) {
    return SwitchOn(ReportFamily::kGsH, "GS ( H, monitoring on");
  }
  if (body == kMonitoringOff) {
    return SwitchOff("GS ( H, monitoring off", now);
  }
  if (body.size() == kTaskNumberLength && body.substr(0, kTaskNumber.size()) == kTaskNumber) {
    const std::string_view digits = body.substr(kTaskNumber.size());
    return SetNextTask(digits, "GS ( H, task number " + Printable(digits), now);
  }
  if (body == kReset || body == kResetWithAnswer) {
    return ResetNumbering(body == kResetWithAnswer);
  }
  return {"GS ( H, " + CountOfBytes(body.size()) + " (not simulated)"};
}

CommandResult JobControl::SwitchOn(ReportFamily family, const std::string& description) {
  family_ = family;
  if (!std::exchange(monitoring_, true)) {
    ++state_.monitoring_hosts;
  }
  return {description + ", by " + FamilyText(Family())};
}

CommandResult JobControl::SwitchOff(const std::string& description, Time now) {
  if (std::exchange(monitoring_, false)) {
    --state_.monitoring_hosts;
  }
  state_.jobs.Complete(connection_, now);
  next_task_ = kNoTask;
  return {description};
}

// The number is for the data that follows. What came before is a job of its own.
CommandResult JobControl::SetNextTask(std::optional<std::string_view> digits, const std::string& description,
                                      Time now) {
  const std::optional<TaskNumber> task = digits ? ParseTask(*digits) : std::nullopt;
  if (!task) {
    return {description + " (not four digits), ignored"};
  }
  state_.jobs.Complete(connection_, now);
  next_task_ = *task;
  return {description};
}

CommandResult JobControl::ResetNumbering(bool answer_wanted) {
  next_task_ = kNoTask;
  if (!answer_wanted) {
    return {"GS ( H, task numbering reset, no answer wanted"};
  }
  return {"GS ( H, task numbering reset", NumberingReset(FamilyOr(ReportFamily::kGsH))};
}

CommandResult JobControl::ClearTasks(ReportFamily command_family) {
  const std::size_t dropped = state_.jobs.DropWaiting();
  return {"clear tasks, " + std::to_string(dropped) + " waiting", TasksCleared(FamilyOr(command_family))};
}

std::string JobControl::AddPrintData(Time now) {
  if (!state_.TracksJobs()) {
    return {};
  }
  if (!state_.jobs.HasOpenJob(connection_, now)) {
    current_task_ = std::exchange(next_task_, kNoTask);
  }
  state_.jobs.AddData(connection_, current_task_, now);
  return current_task_ == kNoTask ? ", job without a number" : ", task " + TaskText(current_task_);
}

void JobControl::Leave(Time now) {
  state_.jobs.Complete(connection_, now);
  if (std::exchange(monitoring_, false)) {
    --state_.monitoring_hosts;
    state_.inherited_monitoring.Leave(*family_);
  }
}

ReportFamily JobControl::FamilyOr(ReportFamily command_family) const {
  return state_.setup.forced_family.value_or(family_.value_or(command_family));
}

}  // namespace virtual_printer
