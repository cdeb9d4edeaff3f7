#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "virtual_printer/wire/bytes.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

enum class DownloadKind { kFile, kFont, kYmodem, kFirmware };

// What a host has brought completely.
struct CompletedDownload {
  DownloadKind kind = DownloadKind::kFile;
  std::string host_name;  // As a YModem host calls its file; it may be any text.
  Bytes data;
};

// A host that never stops must not fill the memory: the bound of each connection.
constexpr std::size_t kMaxDownloadBytes = std::size_t{256} << 20;

// Which program runs in the printer. The loaders know nothing but their download.
enum class PrinterMode { kOrdinary, kYmodemLoader, kFirmwareLoader };

// What the printer does to its connections. Whatever else a dropped connection has brought is lost.
enum class Order { kNone, kDropConnection, kRestart, kStartYmodemLoader, kStartFirmwareLoader };

// Something received and all that came of it.
struct Exchange {
  Message received = {};  // Nothing when both parts are empty. Of a package, the first bytes only.
  std::vector<Message> answers = {};
  std::string note = {};  // Something that nothing received has caused.
  Order order = Order::kNone;
  std::optional<CompletedDownload> completed = {};
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_
