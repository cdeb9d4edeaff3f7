#include "virtual_printer/model/job_control.h"

#include <utility>

#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

// The bodies of GS ( H commands.
constexpr std::string_view kMonitoringOn = "102";
constexpr std::string_view kMonitoringOff = "100";
constexpr std::string_view kTaskNumber = "00";  // Four digits follow.
constexpr std::size_t kTaskNumberLength = 6;
constexpr std::string_view kReset = "200";
constexpr std::string_view kResetAnswered = "200\n";

constexpr std::string_view kSetTask = "\"process_id\" ";

// The text between quotes; nothing when there is anything else.
std::optional<std::string_view> Unquoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
    return std::nullopt;
  }
  return text.substr(1, text.size() - 2);
}

}  // namespace

JobControl::JobControl(int connection, PrinterState& state) : connection_(connection), state_(state) {
  family_ = state_.left_monitoring.TakeOver();
  if (family_) {
    monitoring_ = true;
    ++state_.monitoring_hosts;
  }
}

std::optional<Reaction> JobControl::Execute(const Command& command, Time now) {
  switch (command.kind) {
    case Command::Kind::kV1:
      return ExecuteV1(command, now);
    case Command::Kind::kGsH:
      return ExecuteGsH({reinterpret_cast<const char*>(command.record.data()), command.record.size()}, now);
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

std::optional<Reaction> JobControl::ExecuteV1(const Command& command, Time now) {
  const std::string words = LineText(command);
  const std::string_view arguments = command.arguments;
  if (command.verb == "setval") {
    if (arguments == "\"job_monitor\" \"on\"") {
      return SwitchOn(ReportFamily::kV1, words);
    }
    if (arguments == "\"job_monitor\" \"off\"") {
      return SwitchOff(words, now);
    }
    if (arguments.substr(0, kSetTask.size()) == kSetTask) {
      return SetNextTask(Unquoted(arguments.substr(kSetTask.size())), words, now);
    }
  } else if (command.verb == "getval") {
    if (arguments == "\"job_monitor\"") {
      return Reaction{words, MonitoringState(monitoring_)};
    }
    if (arguments == "\"reprint_status\"") {
      return Reaction{words, StatusAnswer(state_.status)};
    }
  } else if (command.verb == "do" && arguments == "\"print_feedform\"") {
    return Reaction{words + ", paper fed"};
  }
  return std::nullopt;
}

Reaction JobControl::ExecuteGsH(std::string_view body, Time now) {
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
  if (body == kReset || body == kResetAnswered) {
    return ResetNumbering(body == kResetAnswered);
  }
  return {"GS ( H, " + CountOfBytes(body.size()) + " (not simulated)"};
}

Reaction JobControl::SwitchOn(ReportFamily asked_by, const std::string& words) {
  family_ = asked_by;
  if (!std::exchange(monitoring_, true)) {
    ++state_.monitoring_hosts;
  }
  return {words + ", by " + FamilyText(Family())};
}

Reaction JobControl::SwitchOff(const std::string& words, Time now) {
  if (std::exchange(monitoring_, false)) {
    --state_.monitoring_hosts;
  }
  state_.jobs.Complete(connection_, now);
  next_task_ = kNoTask;
  return {words};
}

// The number belongs to the data that follows it, so what came before is a job of its own.
Reaction JobControl::SetNextTask(std::optional<std::string_view> digits, const std::string& words, Time now) {
  const std::optional<TaskNumber> task = digits ? ParseTask(*digits) : std::nullopt;
  if (!task) {
    return {words + " (not four digits), ignored"};
  }
  state_.jobs.Complete(connection_, now);
  next_task_ = *task;
  return {words};
}

Reaction JobControl::ResetNumbering(bool answered) {
  next_task_ = kNoTask;
  if (!answered) {
    return {"GS ( H, task numbering reset, no answer wanted"};
  }
  return {"GS ( H, task numbering reset", NumberingReset(FamilyOr(ReportFamily::kGsH))};
}

Reaction JobControl::ClearTasks(ReportFamily asked_by) {
  const std::size_t dropped = state_.jobs.DropWaiting();
  return {"clear tasks, " + std::to_string(dropped) + " waiting", TasksCleared(FamilyOr(asked_by))};
}

std::string JobControl::AddPrintData(Time now) {
  if (!state_.WatchesJobs()) {
    return {};
  }
  if (!state_.jobs.TakesData(connection_, now)) {
    current_task_ = std::exchange(next_task_, kNoTask);
  }
  state_.jobs.AddData(connection_, current_task_, now);
  return current_task_ == kNoTask ? ", job without a number" : ", task " + TaskText(current_task_);
}

void JobControl::Leave(Time now) {
  state_.jobs.Complete(connection_, now);
  if (std::exchange(monitoring_, false)) {
    --state_.monitoring_hosts;
    state_.left_monitoring.Leave(*family_);
  }
}

ReportFamily JobControl::FamilyOr(ReportFamily asked_by) const {
  return state_.setup.family.value_or(family_.value_or(asked_by));
}

}  // namespace virtual_printer
