#include <asio.hpp>
#include <csignal>
#include <deque>
#include <exception>
#include <iostream>
#include <optional>

#include "virtual_printer/app/console.h"
#include "virtual_printer/app/hosted_printer.h"
#include "virtual_printer/app/options.h"
#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {
namespace {

int Run(const Options& options) {
  // Keeps std::cin independent of C's stdin. The console's thread may be blocked in a read when the program ends, and
  // would hold the lock of stdin.
  std::ios::sync_with_stdio(false);
  Trace trace(options.trace ? &std::cout : nullptr);
  DownloadStore store(options.store, std::cout);

  asio::io_context context(1);
  asio::signal_set signals(context, SIGINT, SIGTERM);
#ifdef SIGBREAK
  signals.add(SIGBREAK);  // Ctrl-Break, and closing the console window.
#endif
  signals.async_wait([&context](const std::error_code&, int) { context.stop(); });

  std::deque<HostedPrinter> printers;
  for (int index = 0; index < options.count; ++index) {
    printers.emplace_back(context, options, index, store, trace);
  }
  for (const HostedPrinter& printer : printers) {
    printer.AnnounceReady();
  }
  std::optional<Console> console;
  if (options.console) {
    console.emplace(context, printers.front().Service(), options.faults.split_pause.value_or(kDefaultSplitPause),
                    std::cout);
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
