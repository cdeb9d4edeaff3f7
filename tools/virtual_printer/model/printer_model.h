#ifndef VIRTUAL_PRINTER_MODEL_PRINTER_MODEL_H_
#define VIRTUAL_PRINTER_MODEL_PRINTER_MODEL_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/model/printer_conversation.h"
#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// The printer leaves the network and comes back in another mode.
struct Outage {
  PrinterMode back_as = PrinterMode::kOrdinary;
  std::chrono::milliseconds duration{0};
};

// What the owner of the connections must do, besides sending.
struct SideEffects {
  struct Download {
    int connection = 0;
    CompletedDownload download;
  };

  std::vector<Download> completed;
  std::vector<int> dropped;      // Connections to drop at once.
  std::optional<Outage> outage;  // All connections are dropped, and none is accepted for this long.
};

// A whole printer: bytes from hosts in, bytes to hosts out. It has no sockets, threads or clock, so tests can drive it
// directly. Times must not run backwards.
//
// Events are in order: an answer directly follows its command, and a report comes where it fell due.
class PrinterModel {
 public:
  using Events = std::vector<WireEvent>;

  explicit PrinterModel(const PrinterSetup& setup) : state_(setup) {}
  PrinterModel(const PrinterModel&) = delete;
  PrinterModel& operator=(const PrinterModel&) = delete;

  // A host has connected. The caller chooses the number, which must not be in use.
  void Connect(int connection);

  // A connected host has sent bytes, in pieces of any size.
  Events Receive(int connection, const std::uint8_t* data, std::size_t size, Time now);

  // The host has stopped sending. It gets no more reports.
  Events Disconnect(int connection, Time now);

  // To be called when NextDeadline has come. The calls above include it.
  Events Advance(Time now);
  std::optional<Time> NextDeadline() const;

  // Returns the side effects since the last call. They must be carried out after each of the calls above, once their
  // events have been sent.
  SideEffects TakeSideEffects() { return std::exchange(side_effects_, {}); }

  // Sends all connected hosts something that no job has caused, each in its report family. Without a value, a job ends
  // with the printer's status.
  Events AnnounceStart(TaskNumber task) const;
  Events AnnounceEnd(TaskNumber task, std::optional<std::uint32_t> value) const;
  Events AnnounceState(TaskNumber task) const;
  Events SendToAll(const Message& message) const;

  void SetStatus(std::uint32_t status) { state_.status = status; }
  const PrinterState& State() const { return state_; }

  // Size of the connection's incomplete command, at most CommandParser::kMaxPending; or of its incomplete package.
  std::size_t PendingBytes(int connection) const { return conversations_.at(connection).PendingBytes(); }

 private:
  PrinterConversation::Sink SinkFor(int connection, Time now, Events& events);
  void Append(int connection, Exchange exchange, Time now, Events& events);
  void CarryOut(ConnectionAction action, int connection);
  void LeaveNetwork(PrinterMode back_as);
  void AppendDueReports(Time now, Events& events);
  void AppendReport(const JobReport& report, Events& events) const;
  Events SendToEach(const std::function<Message(ReportFamily)>& message) const;

  PrinterState state_;
  std::map<int, PrinterConversation> conversations_;  // By connection. They refer to state_.
  SideEffects side_effects_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINTER_MODEL_H_
