#include "virtual_printer/printer_model.h"

#include <utility>

#include "virtual_printer/report_frames.h"

namespace virtual_printer {
namespace {

WireEvent Received(int connection, Bytes bytes, std::string words) {
  return {connection, WireEvent::Direction::kReceived, {std::move(bytes), std::move(words)}};
}

WireEvent Sent(int connection, Message message) {
  return {connection, WireEvent::Direction::kSent, std::move(message)};
}

}  // namespace

void PrinterModel::Connect(int connection) { sessions_.try_emplace(connection, connection, state_); }

PrinterModel::Events PrinterModel::Receive(int connection, const std::uint8_t* data, std::size_t size, Time now) {
  Events events = Advance(now);
  React(connection, sessions_.at(connection).Parse(data, size), now, events);
  return events;
}

PrinterModel::Events PrinterModel::Disconnect(int connection, Time now) {
  Events events = Advance(now);
  Session& session = sessions_.at(connection);
  React(connection, session.ParseEnd(), now, events);
  session.Jobs().Leave(now);
  sessions_.erase(connection);
  AppendPassed(now, events);
  return events;
}

PrinterModel::Events PrinterModel::Advance(Time now) {
  Events events;
  AppendPassed(now, events);
  return events;
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

void PrinterModel::React(int connection, const std::vector<Frame>& frames, Time now, Events& events) {
  for (const Frame& frame : frames) {
    Reaction reaction = sessions_.at(connection).ReactTo(frame, now);
    events.push_back(Received(connection, frame.bytes, std::move(reaction.received)));
    if (!reaction.answer.bytes.empty()) {
      events.push_back(Sent(connection, std::move(reaction.answer)));
    }
    AppendPassed(now, events);
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
