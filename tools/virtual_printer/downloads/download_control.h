#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {

struct DownloadSetup {
  PrinterMode mode = PrinterMode::kOrdinary;    // At the start.
  std::chrono::milliseconds loader_delay{300};  // From the ordinary printer to its loader.
  std::chrono::milliseconds restart_time{300};  // Back to the ordinary printer.
  std::vector<DownloadFault> faults;
};

// Shared by all connections.
struct DownloadState {
  explicit DownloadState(const DownloadSetup& setup) : mode(setup.mode), faults(setup.faults) {}

  PrinterMode mode;
  DownloadFaults faults;
  FirmwareImage firmware;
};

// The downloads of one connection: starts them, holds their receiver, and restarts the printer behind them.
class DownloadControl {
 public:
  // If a loader is running, it receives from the start. The state must outlive the control.
  explicit DownloadControl(DownloadState& state);

  // Null while commands and print data are received.
  DownloadReceiver* Receiver() const { return receiver_.get(); }

  // Returns nothing if the command does not concern downloads. A loader takes no other commands.
  std::optional<Exchange> Execute(const Command& command);

  // Ends the download. Returns a note on what is lost; empty if nothing is.
  std::string Abandon();

 private:
  Exchange StartPackages(DownloadKind kind, std::string description);
  Exchange StartLoader(ConnectionAction action, std::string description);
  Exchange Restart(std::string description);
  Exchange ExecuteInLoader(const Command& command);

  DownloadState& state_;
  std::unique_ptr<DownloadReceiver> receiver_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_
