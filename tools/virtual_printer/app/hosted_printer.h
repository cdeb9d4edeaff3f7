#ifndef VIRTUAL_PRINTER_APP_HOSTED_PRINTER_H_
#define VIRTUAL_PRINTER_APP_HOSTED_PRINTER_H_

#include <asio.hpp>
#include <optional>
#include <string>

#include "virtual_printer/app/options.h"
#include "virtual_printer/app/printer_service.h"
#include "virtual_printer/discovery/scan_responder.h"
#include "virtual_printer/transport/server_group.h"
#include "virtual_printer/transport/tcp_server.h"

namespace virtual_printer {

// A printer with its servers, which answers scans if the options say so.
class HostedPrinter {
 public:
  // The index counts the printers of one program from 0. Each is on the address after that of the one before; only the
  // first one can be on a line. Hosts are accepted from now on. The references must outlive the running of the
  // io_context. Throws std::runtime_error if a place is not available.
  HostedPrinter(asio::io_context& context, const Options& options, int index, DownloadStore& store, Trace& trace);

  // Prints the line that scripts wait for.
  void AnnounceReady() const { Announce("ready", service_.Model().State().setup.downloads.mode); }

  PrinterService& Service() { return service_; }

 private:
  const TcpServer* AddServers(asio::io_context& context, const Options& options, int index);
  void AnswerScans(asio::io_context& context, const TcpServer& server, Trace& trace);
  void Announce(const std::string& word, PrinterMode mode) const;

  PrinterService service_;
  ServerGroup servers_;
  std::optional<ScanResponder> scans_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_HOSTED_PRINTER_H_
