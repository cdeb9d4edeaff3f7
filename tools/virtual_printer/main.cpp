#include <asio.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>

#include "virtual_printer/console.h"
#include "virtual_printer/control_panel.h"
#include "virtual_printer/download_store.h"
#include "virtual_printer/options.h"
#include "virtual_printer/printer_service.h"
#include "virtual_printer/tcp_server.h"
#include "virtual_printer/trace.h"

namespace virtual_printer {
namespace {

int Run(const Options& options) {
  // The console is read past C's input, whose lock a thread that waits for a line would hold when the program ends.
  std::ios::sync_with_stdio(false);
  Trace trace(options.trace ? &std::cout : nullptr);
  DownloadStore store(options.store, std::cout);
  const PrinterMode mode = options.printer.downloads.mode;
  const TcpPorts ports{asio::ip::make_address(options.address), options.port, options.loader_port};
  const asio::ip::tcp::endpoint endpoint(ports.address, ports.Of(mode));
  const auto lifetime = options.once ? TcpServer::Lifetime::kOneConnection : TcpServer::Lifetime::kUntilStopped;

  asio::io_context context(1);
  asio::signal_set signals(context, SIGINT, SIGTERM);
#ifdef SIGBREAK
  signals.add(SIGBREAK);  // Ctrl-Break, and the closing of the console window.
#endif
  signals.async_wait([&context](const std::error_code&, int) { context.stop(); });
  try {
    PrinterService service(context, options.printer, options.faults, store, trace);
    TcpServer server(context, ports, mode, lifetime, service, [&server](PrinterMode back_as) {
      const char* const who = back_as == PrinterMode::kOrdinary ? "back" : "loader";
      std::cout << "virtual printer " << who << " on " << server.LocalEndpoint() << std::endl;
    });
    // Scripts wait for this line; it says that connections are taken from now on.
    std::cout << "virtual printer ready on " << server.LocalEndpoint() << std::endl;

    ControlPanel panel(context, service, options.faults.split_pause.value_or(kDefaultSplitPause), std::cout);
    std::optional<Console> console;
    if (options.console) {
      console.emplace(context, [&panel](const std::string& line) { panel.OnLine(line); });
    }
    context.run();
  } catch (const std::system_error& error) {
    // The one failure that everybody meets gets the same plain words on every system.
    const bool in_use = error.code() == asio::error::address_in_use;
    std::cerr << "virtual_printer: cannot listen on " << endpoint << ": "
              << (in_use ? "the port is in use" : error.code().message()) << '\n';
    return 1;
  }
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
