#include "virtual_printer/app/hosted_printer.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <utility>

#include "virtual_printer/discovery/network_interface.h"

namespace virtual_printer {
namespace {

using asio::ip::address_v4;

// Between the answers of several printers. Real printers never answer at exactly the same time, and a host's receive
// buffer would overflow.
constexpr std::chrono::milliseconds kAnswerSpread{2};

asio::ip::address AddressOf(const Options& options, int index) {
  auto first = asio::ip::make_address(options.address);
  if (!first.is_v4()) {
    return first;
  }
  return address_v4(first.to_v4().to_uint() + static_cast<address_v4::uint_type>(index));
}

PrinterSetup SetupOf(const Options& options, int index) {
  PrinterSetup setup = options.printer;
  if (const auto address = AddressOf(options, index); address.is_v4()) {
    NetworkIdentity& identity = setup.identity;
    identity.number = options.count > 1 ? index + 1 : 0;
    identity.address = address.to_v4().to_bytes();
    if (const auto network = FindInterface(address.to_v4())) {
      identity.mask = network->mask.to_bytes();
    }
    // The first address of the network is the usual one for a gateway.
    const auto mask = address_v4(identity.mask).to_uint();
    identity.gateway = address_v4((address.to_v4().to_uint() & mask) + 1).to_bytes();
  }
  return setup;
}

}  // namespace

HostedPrinter::HostedPrinter(asio::io_context& context, const Options& options, int index, DownloadStore& store,
                             Trace& trace)
    : service_(context, SetupOf(options, index), options.faults, store, trace,
               [this](const Outage& outage) { servers_.LeaveFor(outage.duration, outage.back_as); }),
      servers_(context, options.once ? ServerGroup::Lifetime::kOneConnection : ServerGroup::Lifetime::kUntilStopped,
               service_,
               [this](PrinterMode mode) { Announce(mode == PrinterMode::kOrdinary ? "back" : "loader", mode); }) {
  const TcpServer* const network = AddServers(context, options, index);
  servers_.Open(options.printer.downloads.mode);
  if (options.discoverable && network != nullptr) {
    AnswerScans(context, *network, trace);
  }
}

const TcpServer* HostedPrinter::AddServers(asio::io_context& context, const Options& options, int index) {
  const bool has_line = index == 0 && !options.line.empty();
  if (has_line) {
    servers_.Add(MakeLineServer(context, options.line, servers_.Hosts()));
  }
  if (has_line && !options.port) {
    return nullptr;
  }
  // The TCP server comes last, because scripts take the port from the end of the announcement.
  const TcpPorts ports{AddressOf(options, index), options.port.value_or(0), options.loader_port};
  auto server = std::make_unique<TcpServer>(context, ports, servers_.Hosts());
  const TcpServer* const network = server.get();
  servers_.Add(std::move(server));
  return network;
}

void HostedPrinter::AnswerScans(asio::io_context& context, const TcpServer& server, Trace& trace) {
  NetworkIdentity identity = service_.Model().State().setup.identity;
  identity.port = server.port();
  const auto answer_pause = [this, &server]() -> std::optional<std::chrono::milliseconds> {
    const PrinterState& state = service_.Model().State();
    const ConnectionFaults& faults = service_.Faults();
    // Loaders do not answer scans.
    if (faults.silent || !server.IsListening() || state.downloads.mode != PrinterMode::kOrdinary) {
      return std::nullopt;
    }
    return faults.delay + kAnswerSpread * state.setup.identity.number;
  };
  scans_.emplace(context, identity, answer_pause, trace);
}

void HostedPrinter::Announce(const std::string& word, PrinterMode mode) const {
  std::cout << "virtual printer " << word << " on " << servers_.Places(mode) << std::endl;
}

}  // namespace virtual_printer
