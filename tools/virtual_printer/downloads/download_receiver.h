#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// What a receiver did with the beginning of the bytes it was offered.
struct Intake {
  enum class Outcome {
    kTaken,      // It took `size` bytes, at least one.
    kNeedsMore,  // It took nothing; the same bytes are to be offered again, with more behind them.
    kForeign,    // It took nothing: a command begins here.
  };

  Outcome outcome = Outcome::kNeedsMore;
  std::size_t size = 0;
  Exchange exchange = {};
};

// The printer's side of a download, on one connection.
class DownloadReceiver {
 public:
  virtual ~DownloadReceiver() = default;

  virtual Intake Take(const std::uint8_t* data, std::size_t size) = 0;

  // How long an incomplete unit waits for its rest; nothing when it waits for ever.
  virtual std::optional<std::chrono::milliseconds> Patience(const Bytes& incomplete) const = 0;

  // The rest has not come.
  virtual Exchange OnQuiet(const Bytes& incomplete) = 0;

  // The host has asked for the restart: gives what is complete by that.
  virtual std::optional<CompletedDownload> OnReset() = 0;

  // The connection, or the download, ends. Says what is lost; empty when nothing is.
  virtual std::string Abandon() = 0;
};

// Whether the bytes begin with the wanted ones, as far as they have come.
enum class Match { kNo, kPartial, kFull };
Match MatchBeginning(const std::uint8_t* data, std::size_t size, std::string_view wanted);

// As much of a package as the trace shows.
Bytes HeadOf(const std::uint8_t* data, std::size_t size);

// Adds the answer in the way in which the fault lets it leave. The faults that change its bytes are the caller's.
void AddAnswer(Exchange& exchange, Bytes bytes, std::string text, std::optional<DownloadFaultKind> fault);

// Whether an answer of single bytes, which has neither echo nor checksum, is a refusal with this fault.
bool Refuses(std::optional<DownloadFaultKind> fault);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_RECEIVER_H_
