#ifndef VIRTUAL_PRINTER_APP_DISCOVERABLE_PRINTER_H_
#define VIRTUAL_PRINTER_APP_DISCOVERABLE_PRINTER_H_

#include <asio.hpp>
#include <deque>
#include <optional>
#include <ostream>

#include "virtual_printer/app/options.h"
#include "virtual_printer/app/printer_service.h"
#include "virtual_printer/discovery/scan_responder.h"
#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/transport/server_group.h"
#include "virtual_printer/transport/tcp_server.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// The printer of this place in a row of printers, from 0, each on the address behind the one before.
PrinterSetup SetupInRow(const Options& options, int place);

// Lets a printer that is on a TCP port be found by scans of the network. The references must outlive the running of the
// io_context. Throws std::runtime_error when a port cannot be had.
class DiscoverablePrinter {
 public:
  DiscoverablePrinter(asio::io_context& context, PrinterService& service, const TcpServer& server, Trace& trace);

 private:
  ScanResponder responder_;
};

// All printers of a row but the first, each on its TCP port, to be found by scans.
class FurtherPrinters {
 public:
  // As above.
  FurtherPrinters(asio::io_context& context, const Options& options, DownloadStore& store, Trace& trace);

  // Says where they are.
  void Announce(std::ostream& out) const;

 private:
  struct Printer {
    Printer(asio::io_context& context, const PrinterSetup& setup, const Options& options, DownloadStore& store,
            Trace& trace);

    PrinterService service;
    ServerGroup servers;
    std::optional<DiscoverablePrinter> discoverable;
  };

  std::deque<Printer> printers_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_DISCOVERABLE_PRINTER_H_
