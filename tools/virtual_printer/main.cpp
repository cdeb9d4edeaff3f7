#include <asio.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <system_error>

#include "virtual_printer/options.h"
#include "virtual_printer/printer_state.h"
#include "virtual_printer/tcp_server.h"
#include "virtual_printer/trace.h"

namespace virtual_printer {
namespace {

int Run(const Options& options) {
  PrinterState state(ParameterZone{options.width});
  Trace trace(options.trace ? &std::cout : nullptr);
  const asio::ip::tcp::endpoint endpoint(asio::ip::make_address(options.address), options.port);
  const auto lifetime = options.once ? TcpServer::Lifetime::kOneConnection : TcpServer::Lifetime::kUntilStopped;

  asio::io_context context(1);
  asio::signal_set signals(context, SIGINT, SIGTERM);
#ifdef SIGBREAK
  signals.add(SIGBREAK);  // Ctrl-Break, and the closing of the console window.
#endif
  signals.async_wait([&context](const std::error_code&, int) { context.stop(); });
  try {
    TcpServer server(context, endpoint, lifetime, state, options.faults, trace);
    // Scripts wait for this line; it says that connections are taken from now on.
    std::cout << "virtual printer ready on " << server.LocalEndpoint() << std::endl;
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
