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
#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/model/session.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// The printer leaves the network, and comes back as something else.
struct Outage {
  PrinterMode back_as = PrinterMode::kOrdinary;
  std::chrono::milliseconds duration{0};
};

// What the printer wants of whoever holds its connections, besides sending.
struct PrinterOrders {
  struct Download {
    int connection = 0;
    CompletedDownload download;
  };

  std::vector<Download> completed;
  std::vector<int> dropped;      // Connections to be dropped at once.
  std::optional<Outage> outage;  // All connections are to be dropped, and none taken for this long.
};

// A whole printer: takes the bytes of its hosts, gives what they are sent. It knows no sockets or threads and has no
// clock, so a test drives it directly and through any length of time. Times must not run backwards.
//
// What the calls give is in order: an answer stands directly behind its command, a report where it fell due.
class PrinterModel {
 public:
  using Events = std::vector<WireEvent>;

  explicit PrinterModel(const PrinterSetup& setup) : state_(setup) {}
  PrinterModel(const PrinterModel&) = delete;
  PrinterModel& operator=(const PrinterModel&) = delete;

  // A host has connected. The caller chooses the number; it must not be in use.
  void Connect(int connection);

  // Bytes of a connected host have arrived, in pieces of any size.
  Events Receive(int connection, const std::uint8_t* data, std::size_t size, Time now);

  // The host sends nothing any more. Gives what it left incomplete; from then on it is sent no reports.
  Events Disconnect(int connection, Time now);

  // Lets time pass. To be called when NextDeadline has come; the other calls do so themselves.
  Events Advance(Time now);
  std::optional<Time> NextDeadline() const;

  // What has come up since the last time; to be carried out after each of the calls above, behind their events.
  PrinterOrders TakeOrders() { return std::exchange(orders_, {}); }

  // Sends all connected hosts what no job has caused, each in its own manner. Without a value, a job ends with the
  // printer's status.
  Events AnnounceStart(TaskNumber task) const;
  Events AnnounceEnd(TaskNumber task, std::optional<std::uint32_t> value) const;
  Events AnnounceState(TaskNumber task) const;
  Events SendToAll(const Message& message) const;

  void SetStatus(std::uint32_t status) { state_.status = status; }
  const PrinterState& State() const { return state_; }

  // Bytes of an incomplete command, at most CommandParser::kMaxPending; in a download, of an incomplete package.
  std::size_t PendingBytes(int connection) const { return sessions_.at(connection).PendingBytes(); }

 private:
  Session::Sink Into(Events& events, int connection, Time now);
  void Append(int connection, Exchange exchange, Time now, Events& events);
  void CarryOut(Order order, int connection);
  void LeaveFor(PrinterMode mode);
  void AppendPassed(Time now, Events& events);
  void AppendReport(const JobReport& report, Events& events) const;
  Events ToEach(const std::function<Message(ReportFamily)>& message) const;

  PrinterState state_;
  std::map<int, Session> sessions_;  // By connection. They refer to state_.
  PrinterOrders orders_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINTER_MODEL_H_
