#include <asio.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "virtual_printer/app/console.h"
#include "virtual_printer/app/control_panel.h"
#include "virtual_printer/app/discoverable_printer.h"
#include "virtual_printer/app/options.h"
#include "virtual_printer/app/printer_service.h"
#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/transport/line_server.h"
#include "virtual_printer/transport/server_group.h"
#include "virtual_printer/transport/tcp_server.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {
namespace {

int Run(const Options& options) {
  // The console is read past C's input, whose lock a thread that waits for a line would hold when the program ends.
  std::ios::sync_with_stdio(false);
  Trace trace(options.trace ? &std::cout : nullptr);
  DownloadStore store(options.store, std::cout);
  const PrinterMode mode = options.printer.downloads.mode;
  const auto lifetime = options.once ? ServerGroup::Lifetime::kOneConnection : ServerGroup::Lifetime::kUntilStopped;

  asio::io_context context(1);
  asio::signal_set signals(context, SIGINT, SIGTERM);
#ifdef SIGBREAK
  signals.add(SIGBREAK);  // Ctrl-Break, and the closing of the console window.
#endif
  signals.async_wait([&context](const std::error_code&, int) { context.stop(); });

  PrinterService service(context, SetupInRow(options, 0), options.faults, store, trace);
  ServerGroup servers(context, lifetime, service, [&servers](PrinterMode back_as) {
    const char* const who = back_as == PrinterMode::kOrdinary ? "back" : "loader";
    std::cout << "virtual printer " << who << " on " << servers.Places(back_as) << std::endl;
  });
  if (!options.line.empty()) {
    servers.Add(MakeLineServer(context, options.line, servers.Hosts()));
  }
  // The TCP server comes last: scripts take the port from the end of the line.
  TcpServer* network = nullptr;
  if (options.port) {
    const TcpPorts ports{asio::ip::make_address(options.address), *options.port, options.loader_port};
    auto server = std::make_unique<TcpServer>(context, ports, servers.Hosts());
    network = server.get();
    servers.Add(std::move(server));
  }
  servers.Open(mode);
  std::optional<DiscoverablePrinter> discoverable;
  if (options.discoverable && network != nullptr) {
    discoverable.emplace(context, service, *network, trace);
  }
  FurtherPrinters further(context, options, store, trace);
  // Scripts wait for this line; it says that connections are taken from now on.
  std::cout << "virtual printer ready on " << servers.Places(mode) << std::endl;
  further.Announce(std::cout);

  ControlPanel panel(context, service, options.faults.split_pause.value_or(kDefaultSplitPause), std::cout);
  std::optional<Console> console;
  if (options.console) {
    console.emplace(context, [&panel](const std::string& line) { panel.OnLine(line); });
  }
  context.run();
  return 0;
}

}  // namespace
}  // namespace virtual_printer

int main(int argc, char** argv) {
  try {
    int exit_status = 0;
    const auto options = virtual_printer::ParseOptions(argc, argv, &exit_status);
    return options ? virtual_printer::Run(*options) : exit_status;
  } catch (const std::exception& error) {
    std::cerr << "virtual_printer: " << error.what() << '\n';
    return 1;
  }
}
