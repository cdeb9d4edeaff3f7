#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_

#include <memory>
#include <optional>
#include <string>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {

// One connection's downloads: the switches to them, the receiver that the bytes go to, and the restart behind them.
class DownloadControl {
 public:
  // A connection to a loader receives from its start. The state must outlive the control.
  explicit DownloadControl(DownloadState& state);

  // Null while the connection brings commands and print data.
  DownloadReceiver* Receiver() const { return receiver_.get(); }

  // Nothing when the command is about something else. A loader knows no other commands.
  std::optional<Exchange> Execute(const Command& command);

  // The connection goes on without the download, or ends. Says what is lost; empty when nothing is.
  std::string Abandon();

 private:
  Exchange ReceivePackages(DownloadKind kind, std::string words);
  Exchange StartLoader(Order order, std::string words);
  Exchange Restart(std::string words);
  Exchange ExecuteInLoader(const Command& command);

  DownloadState& state_;
  std::unique_ptr<DownloadReceiver> receiver_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_CONTROL_H_
