#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// What a receiver did with the bytes it was offered.
struct ReceiveResult {
  enum class Outcome {
    kConsumed,   // Consumed `size` bytes, at least one.
    kNeedsMore,  // Consumed nothing. The same bytes are to be offered again, with more behind them.
    kCommand,    // Consumed nothing, because a command begins here.
  };

  Outcome outcome = Outcome::kNeedsMore;
  std::size_t size = 0;
  Exchange exchange = {};
};

// The printer's side of a download, on one connection.
class DownloadReceiver {
 public:
  virtual ~DownloadReceiver() = default;

  virtual ReceiveResult Receive(const std::uint8_t* data, std::size_t size) = 0;

  // How long to wait for the rest of an incomplete unit; nothing for ever.
  virtual std::optional<std::chrono::milliseconds> Timeout(const Bytes& incomplete) const = 0;

  // The rest has not arrived in time.
  virtual Exchange OnTimeout(const Bytes& incomplete) = 0;

  // The host has asked for the restart. Returns the download that this completes.
  virtual std::optional<CompletedDownload> OnReset() = 0;

  // The connection or the download ends. Returns a note on what is lost; empty if nothing is.
  virtual std::string Abandon() = 0;
};

// Maximum size of a package of a file or a font, with its header and checksum.
constexpr std::size_t kMaxPackageSize = 65535 + 12;

// Files and fonts come in numbered packages with a checksum, each answered by an echo of its header. The faults, here
// and below, must outlive the receiver.
std::unique_ptr<DownloadReceiver> MakePackageReceiver(DownloadKind kind, DownloadFaults& faults);

// The YModem loader's dialect of YModem-1K: the host begins, and the CRC is little-endian. Data beyond the announced
// size is acknowledged and discarded.
std::unique_ptr<DownloadReceiver> MakeYmodemReceiver(DownloadFaults& faults);

// Firmware segments: a header that holds the length of the body, and the body. Each part is answered by one byte. The
// image must outlive the receiver.
std::unique_ptr<DownloadReceiver> MakeFirmwareReceiver(FirmwareImage& image, DownloadFaults& faults);

// Whether the bytes received so far begin with `expected`.
enum class Match { kNo, kPartial, kFull };
Match MatchPrefix(const std::uint8_t* data, std::size_t size, std::string_view expected);

// The part of a package that the trace shows.
Bytes FirstBytes(const std::uint8_t* data, std::size_t size);

// Adds the answer, delayed or suppressed by the fault. Faults that change its bytes are left to the caller.
void AddAnswer(Exchange& exchange, Bytes bytes, std::string text, std::optional<DownloadFaultKind> fault);

// Whether the fault makes a refusal of an answer that has neither echo nor checksum.
bool IsRefusal(std::optional<DownloadFaultKind> fault);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_
