#include "virtual_printer/model/printer_model.h"

#include <utility>

#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {
namespace {

WireEvent Sent(int connection, Message message) {
  return {connection, WireEvent::Direction::kSent, std::move(message)};
}

}  // namespace

void PrinterModel::Connect(int connection) { sessions_.try_emplace(connection, connection, state_); }

PrinterModel::Events PrinterModel::Receive(int connection, const std::uint8_t* data, std::size_t size, Time now) {
  Events events = Advance(now);
  sessions_.at(connection).Receive(data, size, now, Into(events, connection, now));
  return events;
}

PrinterModel::Events PrinterModel::Disconnect(int connection, Time now) {
  Events events = Advance(now);
  Session& session = sessions_.at(connection);
  session.Finish(now, Into(events, connection, now));
  session.Jobs().Leave(now);
  sessions_.erase(connection);
  AppendPassed(now, events);
  return events;
}

PrinterModel::Events PrinterModel::Advance(Time now) {
  Events events;
  AppendPassed(now, events);
  for (auto& [connection, session] : sessions_) {
    session.Advance(now, Into(events, connection, now));
  }
  return events;
}

std::optional<Time> PrinterModel::NextDeadline() const {
  std::optional<Time> next = state_.jobs.NextDeadline();
  for (const auto& [connection, session] : sessions_) {
    const std::optional<Time> deadline = session.NextDeadline();
    if (deadline && (!next || *deadline < *next)) {
      next = deadline;
    }
  }
  return next;
}

PrinterModel::Events PrinterModel::AnnounceStart(TaskNumber task) const {
  return ToEach([&](ReportFamily family) { return JobStarted(family, task); });
}

PrinterModel::Events PrinterModel::AnnounceEnd(TaskNumber task, std::optional<std::uint32_t> value) const {
  return ToEach([&](ReportFamily family) { return JobEnded(family, task, value.value_or(state_.status)); });
}

PrinterModel::Events PrinterModel::AnnounceState(TaskNumber task) const { return SendToAll(JobState(task)); }

PrinterModel::Events PrinterModel::SendToAll(const Message& message) const {
  return ToEach([&](ReportFamily) { return message; });
}

PrinterModel::Events PrinterModel::ToEach(const std::function<Message(ReportFamily)>& message) const {
  Events events;
  for (const auto& [connection, session] : sessions_) {
    events.push_back(Sent(connection, message(session.Jobs().Family())));
  }
  return events;
}

Session::Sink PrinterModel::Into(Events& events, int connection, Time now) {
  return [this, &events, connection, now](Exchange exchange) { Append(connection, std::move(exchange), now, events); };
}

void PrinterModel::Append(int connection, Exchange exchange, Time now, Events& events) {
  if (!exchange.received.bytes.empty()) {
    events.push_back({connection, WireEvent::Direction::kReceived, std::move(exchange.received)});
  }
  for (Message& answer : exchange.answers) {
    events.push_back(Sent(connection, std::move(answer)));
  }
  if (!exchange.note.empty()) {
    events.push_back({connection, WireEvent::Direction::kNote, {{}, std::move(exchange.note)}});
  }
  if (exchange.completed) {
    orders_.completed.push_back({connection, *std::move(exchange.completed)});
  }
  CarryOut(exchange.order, connection);
  AppendPassed(now, events);
}

void PrinterModel::CarryOut(Order order, int connection) {
  switch (order) {
    case Order::kNone:
      break;
    case Order::kDropConnection:
      orders_.dropped.push_back(connection);
      break;
    case Order::kRestart:
      // As after switching off and on.
      state_.current = state_.saved;
      state_.jobs.Clear();
      LeaveFor(PrinterMode::kOrdinary);
      break;
    case Order::kStartYmodemLoader:
      LeaveFor(PrinterMode::kYmodemLoader);
      break;
    case Order::kStartFirmwareLoader:
      LeaveFor(PrinterMode::kFirmwareLoader);
      break;
  }
}

void PrinterModel::LeaveFor(PrinterMode mode) {
  const DownloadSetup& setup = state_.setup.downloads;
  orders_.outage = {mode, mode == PrinterMode::kOrdinary ? setup.restart_time : setup.loader_delay};
  state_.downloads.mode = mode;
  state_.downloads.firmware.Forget();
  for (auto& [connection, session] : sessions_) {
    session.Drop();
  }
}

void PrinterModel::AppendPassed(Time now, Events& events) {
  for (const JobReport& report : state_.jobs.Advance(now)) {
    AppendReport(report, events);
  }
}

void PrinterModel::AppendReport(const JobReport& report, Events& events) const {
  const bool ended = report.kind == JobReport::Kind::kEnded;
  for (const auto& [connection, session] : sessions_) {
    if (const auto family = session.Jobs().Reports()) {
      events.push_back(
          Sent(connection, ended ? JobEnded(*family, report.task, state_.status) : JobStarted(*family, report.task)));
    }
  }
  if (ended && state_.setup.task_over && sessions_.count(report.connection) != 0) {
    events.push_back(Sent(report.connection, TaskOver(report.task)));
  }
}

}  // namespace virtual_printer
