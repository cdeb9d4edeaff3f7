#include "virtual_printer/app/printer_service.h"

#include <system_error>
#include <utility>
#include <vector>

namespace virtual_printer {
namespace {

Time Now() { return Time::clock::now(); }

}  // namespace

void PrinterService::Serve(std::unique_ptr<ByteStream> stream, const std::string& from,
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
      host->second.connection->Take(event);
    }
  }
}

void PrinterService::DropAll(const std::string& why) {
  std::vector<std::shared_ptr<Connection>> connections;  // Each one leaves hosts_ as it closes.
  for (const auto& [number, host] : hosts_) {
    connections.push_back(host.connection);
  }
  for (const auto& connection : connections) {
    connection->Drop(why);
  }
}

void PrinterService::OnReceived(int connection, const std::uint8_t* data, std::size_t size) {
  CarryOut(model_.Receive(connection, data, size, Now()));
}

void PrinterService::OnHostEnded(int connection) { CarryOut(model_.Disconnect(connection, Now())); }

void PrinterService::OnClosed(int connection) {
  const auto host = hosts_.extract(connection);
  host.mapped().on_closed();
}

void PrinterService::CarryOut(const PrinterModel::Events& events) {
  Send(events);
  CarryOut(model_.TakeOrders());
  AwaitDeadline();
}

// Dropping a connection comes back here, with nothing left to carry out.
void PrinterService::CarryOut(const PrinterOrders& orders) {
  for (const auto& [connection, download] : orders.completed) {
    trace_.Note(connection, store_.Store(download));
  }
  for (const int connection : orders.dropped) {
    if (const auto host = hosts_.find(connection); host != hosts_.end()) {
      const std::shared_ptr<Connection> held = host->second.connection;
      held->Drop("dropped (fault)");
    }
  }
  if (orders.outage) {
    const bool restarts = orders.outage->back_as == PrinterMode::kOrdinary;
    if (outage_listener_ != nullptr) {
      outage_listener_->OnOutage(*orders.outage);
    }
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
      CarryOut(model_.Advance(Now()));
    }
  });
}

}  // namespace virtual_printer
