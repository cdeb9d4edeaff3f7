#include "virtual_printer/app/printer_service.h"

#include <system_error>
#include <utility>
#include <vector>

namespace virtual_printer {
namespace {

Time Now() { return Time::clock::now(); }

}  // namespace

void PrinterService::OnHost(std::unique_ptr<ByteStream> stream, const std::string& from,
                            std::function<void()> on_closed) {
  const int number = trace_.NumberConnection();
  std::string note = "connected from " + from;
  if (const NetworkIdentity& identity = model_.State().setup.identity; identity.number > 0) {
    note += " to " + identity.FullName();
  }
  trace_.Note(number, note);

  ConnectionListener& listener = *this;
  auto connection = std::make_shared<Connection>(std::move(stream), number, faults_, trace_, listener);
  hosts_[number] = {connection, std::move(on_closed)};
  model_.Connect(number);
  connection->Start();
}

void PrinterService::Send(const PrinterModel::Events& events) {
  for (const WireEvent& event : events) {
    const auto host = hosts_.find(event.connection);
    if (host != hosts_.end()) {
      host->second.connection->Process(event);
    }
  }
}

void PrinterService::DropAll(const std::string& reason) {
  std::vector<std::shared_ptr<Connection>> connections;  // Closing removes them from hosts_.
  for (const auto& [number, host] : hosts_) {
    connections.push_back(host.connection);
  }
  for (const auto& connection : connections) {
    connection->Drop(reason);
  }
}

void PrinterService::OnReceived(int connection, const std::uint8_t* data, std::size_t size) {
  Process(model_.Receive(connection, data, size, Now()));
}

void PrinterService::OnHostEnded(int connection) { Process(model_.Disconnect(connection, Now())); }

void PrinterService::OnClosed(int connection) {
  const auto host = hosts_.extract(connection);
  host.mapped().on_closed();
}

void PrinterService::Process(const PrinterModel::Events& events) {
  Send(events);
  CarryOut(model_.TakeSideEffects());
  AwaitDeadline();
}

// Dropping a connection leads back here, with no side effects left.
void PrinterService::CarryOut(const SideEffects& side_effects) {
  for (const auto& [connection, download] : side_effects.completed) {
    trace_.Note(connection, store_.Store(download));
  }
  for (const int connection : side_effects.dropped) {
    if (const auto host = hosts_.find(connection); host != hosts_.end()) {
      const std::shared_ptr<Connection> held = host->second.connection;
      held->Drop("dropped (fault)");
    }
  }
  if (side_effects.outage) {
    const bool restarts = side_effects.outage->back_as == PrinterMode::kOrdinary;
    on_outage_(*side_effects.outage);
    DropAll(restarts ? "dropped, the printer restarts" : "dropped, the loader starts");
  }
}

void PrinterService::AwaitDeadline() {
  const std::optional<Time> deadline = model_.NextDeadline();
  if (!deadline) {
    deadline_.cancel();
    return;
  }
  deadline_.expires_at(*deadline);
  deadline_.async_wait([this](const std::error_code& error) {
    if (!error) {
      Process(model_.Advance(Now()));
    }
  });
}

}  // namespace virtual_printer
