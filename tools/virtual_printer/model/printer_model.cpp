#include "virtual_printer/model/printer_model.h"

#include <utility>

#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {
namespace {

WireEvent Sent(int connection, Message message) {
  return {connection, WireEvent::Direction::kSent, std::move(message)};
}

}  // namespace

void PrinterModel::Connect(int connection) { conversations_.try_emplace(connection, connection, state_); }

PrinterModel::Events PrinterModel::Receive(int connection, const std::uint8_t* data, std::size_t size, Time now) {
  Events events = Advance(now);
  conversations_.at(connection).Receive(data, size, now, SinkFor(connection, now, events));
  return events;
}

PrinterModel::Events PrinterModel::Disconnect(int connection, Time now) {
  Events events = Advance(now);
  PrinterConversation& conversation = conversations_.at(connection);
  conversation.Finish(now, SinkFor(connection, now, events));
  conversation.Jobs().Leave(now);
  conversations_.erase(connection);
  AppendDueReports(now, events);
  return events;
}

PrinterModel::Events PrinterModel::Advance(Time now) {
  Events events;
  AppendDueReports(now, events);
  for (auto& [connection, conversation] : conversations_) {
    conversation.Advance(now, SinkFor(connection, now, events));
  }
  return events;
}

std::optional<Time> PrinterModel::NextDeadline() const {
  std::optional<Time> next = state_.jobs.NextDeadline();
  for (const auto& [connection, conversation] : conversations_) {
    const std::optional<Time> deadline = conversation.NextDeadline();
    if (deadline && (!next || *deadline < *next)) {
      next = deadline;
    }
  }
  return next;
}

PrinterModel::Events PrinterModel::AnnounceStart(TaskNumber task) const {
  return SendToEach([&](ReportFamily family) { return JobStarted(family, task); });
}

PrinterModel::Events PrinterModel::AnnounceEnd(TaskNumber task, std::optional<std::uint32_t> value) const {
  return SendToEach([&](ReportFamily family) { return JobEnded(family, task, value.value_or(state_.status)); });
}

PrinterModel::Events PrinterModel::AnnounceState(TaskNumber task) const { return SendToAll(JobState(task)); }

PrinterModel::Events PrinterModel::SendToAll(const Message& message) const {
  return SendToEach([&](ReportFamily) { return message; });
}

PrinterModel::Events PrinterModel::SendToEach(const std::function<Message(ReportFamily)>& message) const {
  Events events;
  for (const auto& [connection, conversation] : conversations_) {
    events.push_back(Sent(connection, message(conversation.Jobs().Family())));
  }
  return events;
}

PrinterConversation::Sink PrinterModel::SinkFor(int connection, Time now, Events& events) {
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
    side_effects_.completed.push_back({connection, *std::move(exchange.completed)});
  }
  CarryOut(exchange.action, connection);
  AppendDueReports(now, events);
}

void PrinterModel::CarryOut(ConnectionAction action, int connection) {
  switch (action) {
    case ConnectionAction::kNone:
      break;
    case ConnectionAction::kDrop:
      side_effects_.dropped.push_back(connection);
      break;
    case ConnectionAction::kRestart:
      // As if switched off and on.
      state_.current = state_.saved;
      state_.jobs.Clear();
      LeaveNetwork(PrinterMode::kOrdinary);
      break;
    case ConnectionAction::kStartYmodemLoader:
      LeaveNetwork(PrinterMode::kYmodemLoader);
      break;
    case ConnectionAction::kStartFirmwareLoader:
      LeaveNetwork(PrinterMode::kFirmwareLoader);
      break;
  }
}

void PrinterModel::LeaveNetwork(PrinterMode back_as) {
  const DownloadSetup& setup = state_.setup.downloads;
  side_effects_.outage = {back_as, back_as == PrinterMode::kOrdinary ? setup.restart_time : setup.loader_delay};
  state_.downloads.mode = back_as;
  state_.downloads.firmware.Discard();
  for (auto& [connection, conversation] : conversations_) {
    conversation.Drop();
  }
}

void PrinterModel::AppendDueReports(Time now, Events& events) {
  for (const JobReport& report : state_.jobs.Advance(now)) {
    AppendReport(report, events);
  }
}

void PrinterModel::AppendReport(const JobReport& report, Events& events) const {
  const bool ended = report.kind == JobReport::Kind::kEnded;
  for (const auto& [connection, conversation] : conversations_) {
    if (const auto family = conversation.Jobs().Reports()) {
      events.push_back(
          Sent(connection, ended ? JobEnded(*family, report.task, state_.status) : JobStarted(*family, report.task)));
    }
  }
  if (ended && state_.setup.task_over && conversations_.count(report.connection) != 0) {
    events.push_back(Sent(report.connection, TaskOver(report.task)));
  }
}

}  // namespace virtual_printer
