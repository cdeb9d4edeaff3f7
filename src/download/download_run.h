// The state of one download and the steps that all downloads share: initial checks, cancel flag, trace, progress, short
// answers, and the restart of the printer.
#ifndef VEXO_DOWNLOAD_DOWNLOAD_RUN_H_
#define VEXO_DOWNLOAD_DOWNLOAD_RUN_H_

#include <cstdint>
#include <optional>
#include <string_view>

#include "download/source_file.h"
#include "protocol/bytes.h"
#include "protocol/checked_printer.h"
#include "vexo/extend.h"

namespace vexo {

// The result of a step: the code that ends the download, or nothing when it continues.
using Ending = std::optional<int32_t>;

// Makes the running download end when it next checks for it. Callable from any thread.
void CancelDownload();

class DownloadRun {
 public:
  // Compatibility: clears the cancel flag, so an earlier request does not affect this download.
  DownloadRun(VexoPrinterHandle* handle, DownloadProgressCallback progress);
  DownloadRun(const DownloadRun&) = delete;
  DownloadRun& operator=(const DownloadRun&) = delete;

  // The checks at the start of every download, in this order.
  Ending CheckHandle() const;
  Ending OpenFile(const char* name, const char* empty_file_trace);

  SourceFile& file() { return file_; }
  VexoPrinterHandle* handle() const { return handle_; }
  const CheckedPrinter& printer() const { return printer_; }

  // Reads the whole file. Throws std::bad_alloc.
  Ending ReadFile(Bytes* content);

  bool IsCancelled() const;
  Ending CheckCancelled() const;  // Writes a trace line if cancelled.

  void ReportProgress(int32_t percentage) const;
  void ReportProgress(uint32_t done, uint32_t total) const;  // The percentage is truncated to an integer.

  // Receives and discards what the printer has already sent.
  void flushInput() const;

  // Reads an answer of `wanted` bytes, at most 12, with up to six reads 200 ms apart.
  //
  // Returns VEXO_OK; VEXO_ERROR_HANDLE for a null or bad handle or a null buffer; VEXO_ERROR_IO_NOT_OPEN; VEXO_OK or
  // VEXO_ERROR_IO_READ_TIMEOUT with *received 0 when nothing arrived; otherwise the code of the read.
  //
  // Compatibility: expects the answer in a single piece. Of an answer in several pieces, *received counts only the last
  // piece, and that many bytes from the start of the answer are copied, which every caller rejects.
  int32_t readExact(uint8_t* buffer, uint32_t wanted, uint32_t* received) const;

  // Writes the V1 command do with this action. Returns true on failure.
  //
  // Compatibility: downloads that end with it ignore the result; the file has been transferred by then.
  bool sendDoCommand(std::string_view action) const;

  // Restarts the printer. A failure ends the download.
  Ending Restart() const;

  // Closes the file, then writes the final trace line, so that a host that reads it can already use the file.
  void Complete();

 private:
  VexoPrinterHandle* const handle_;
  const DownloadProgressCallback progress_;
  const CheckedPrinter printer_;
  SourceFile file_;
};

// Writes a trace line and ends the download with `code`.
Ending Fail(int32_t code, const char* trace);

// Number of `piece`-byte chunks in `size` bytes, rounded up.
uint32_t CountPieces(int32_t size, int32_t piece);

// The file became unreadable or shorter during the download. Only its own bytes may be sent to the printer.
inline constexpr char kReadFileFailedTrace[] = "failed:Read File Failed...\n";

inline constexpr std::string_view kResetPrinter = "reset_printer";

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_DOWNLOAD_RUN_H_
