#include "virtual_printer/printer_service.h"

#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

namespace virtual_printer {
namespace {

Time Now() { return Time::clock::now(); }

}  // namespace

void PrinterService::Serve(asio::ip::tcp::socket socket, std::function<void()> on_closed) {
  const int number = ++connections_;
  std::error_code gone;
  std::ostringstream note;
  note << "connected from " << socket.remote_endpoint(gone);
  trace_.Note(number, note.str());

  ConnectionListener& listener = *this;
  auto connection = std::make_shared<Connection>(std::move(socket), number, faults_, trace_, listener);
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

void PrinterService::DropAll() {
  std::vector<std::shared_ptr<Connection>> connections;  // Each one leaves hosts_ as it closes.
  for (const auto& [number, host] : hosts_) {
    connections.push_back(host.connection);
  }
  for (const auto& connection : connections) {
    connection->Drop("dropped");
  }
}

void PrinterService::OnReceived(int connection, const std::uint8_t* data, std::size_t size) {
  Send(model_.Receive(connection, data, size, Now()));
  AwaitDeadline();
}

void PrinterService::OnHostEnded(int connection) {
  Send(model_.Disconnect(connection, Now()));
  AwaitDeadline();
}

void PrinterService::OnClosed(int connection) {
  const auto host = hosts_.extract(connection);
  host.mapped().on_closed();
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
      Send(model_.Advance(Now()));
      AwaitDeadline();
    }
  });
}

}  // namespace virtual_printer
