#include "virtual_printer/app/discoverable_printer.h"

#include <chrono>
#include <iostream>
#include <memory>
#include <utility>

#include "virtual_printer/discovery/network_interface.h"

namespace virtual_printer {
namespace {

using asio::ip::address_v4;

// Real printers never answer in the very same moment; the host's system would lose some of so many datagrams.
constexpr std::chrono::milliseconds kAnswerSpread{2};

TcpPorts PortsOf(const Options& options, const NetworkIdentity& identity) {
  return {address_v4(identity.address), options.port.value_or(0), options.loader_port};
}

NetworkIdentity WithPort(NetworkIdentity identity, const TcpServer& server) {
  identity.port = server.port();
  return identity;
}

}  // namespace

PrinterSetup SetupInRow(const Options& options, int place) {
  PrinterSetup setup = options.printer;
  const auto first = asio::ip::make_address(options.address);
  if (!first.is_v4()) {
    return setup;
  }
  NetworkIdentity& identity = setup.identity;
  const address_v4 address(first.to_v4().to_uint() + static_cast<address_v4::uint_type>(place));
  identity.number = options.count > 1 ? place + 1 : 0;
  identity.address = address.to_bytes();
  if (const auto network = FindInterface(address)) {
    identity.mask = network->mask.to_bytes();
  }
  // Where most networks have it.
  const auto mask = address_v4(identity.mask).to_uint();
  identity.gateway = address_v4((address.to_uint() & mask) + 1).to_bytes();
  return setup;
}

DiscoverablePrinter::DiscoverablePrinter(asio::io_context& context, PrinterService& service, const TcpServer& server,
                                         Trace& trace)
    : responder_(
          context, WithPort(service.Model().State().setup.identity, server),
          [&service, &server]() -> std::optional<std::chrono::milliseconds> {
            const PrinterState& state = service.Model().State();
            const Faults& faults = service.CurrentFaults();
            // A loader knows nothing but its download.
            if (faults.silent || !server.IsListening() || state.downloads.mode != PrinterMode::kOrdinary) {
              return std::nullopt;
            }
            return faults.delay + kAnswerSpread * state.setup.identity.number;
          },
          trace) {}

FurtherPrinters::FurtherPrinters(asio::io_context& context, const Options& options, DownloadStore& store,
                                 Trace& trace) {
  for (int place = 1; place < options.count; ++place) {
    printers_.emplace_back(context, SetupInRow(options, place), options, store, trace);
  }
}

void FurtherPrinters::Announce(std::ostream& out) const {
  for (const Printer& printer : printers_) {
    out << "virtual printer ready on " << printer.servers.Places(PrinterMode::kOrdinary) << std::endl;
  }
}

FurtherPrinters::Printer::Printer(asio::io_context& context, const PrinterSetup& setup, const Options& options,
                                  DownloadStore& store, Trace& trace)
    : service(context, setup, options.faults, store, trace),
      servers(context, ServerGroup::Lifetime::kUntilStopped, service, [this](PrinterMode back_as) {
        const char* const who = back_as == PrinterMode::kOrdinary ? "back" : "loader";
        std::cout << "virtual printer " << who << " on " << servers.Places(back_as) << std::endl;
      }) {
  auto server = std::make_unique<TcpServer>(context, PortsOf(options, setup.identity), servers.Hosts());
  const TcpServer& network = *server;
  servers.Add(std::move(server));
  servers.Open(setup.downloads.mode);
  discoverable.emplace(context, service, network, trace);
}

}  // namespace virtual_printer
