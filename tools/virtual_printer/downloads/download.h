#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "virtual_printer/wire/bytes.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

enum class DownloadKind { kFile, kFont, kYmodem, kFirmware };

struct CompletedDownload {
  DownloadKind kind = DownloadKind::kFile;
  std::string host_name;  // The file name that a YModem host sent; any text.
  Bytes data;
};

// Limit of each connection, so that a host that never stops cannot exhaust the memory.
constexpr std::size_t kMaxDownloadBytes = std::size_t{256} << 20;

// The program that runs in the printer. The loaders only take their own download.
enum class PrinterMode { kOrdinary, kYmodemLoader, kFirmwareLoader };

// What the printer does to its connections. Unread input of a dropped connection is lost.
enum class ConnectionAction { kNone, kDrop, kRestart, kStartYmodemLoader, kStartFirmwareLoader };

// Something received, and everything that follows from it.
struct Exchange {
  Message received = {};  // Both parts may be empty. Of a package, only the first bytes.
  std::vector<Message> answers = {};
  std::string note = {};
  ConnectionAction action = ConnectionAction::kNone;
  std::optional<CompletedDownload> completed = {};
};

// The complete segments of a firmware image. It outlives connections, because hosts reconnect for each segment.
struct FirmwareImage {
  void Discard() {
    data.clear();
    parts = 0;
    ++generation;
  }

  Bytes data;
  std::uint32_t parts = 0;       // Headers and bodies.
  std::uint32_t generation = 0;  // Changes when the image is discarded: a segment begun before does not count.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_H_
