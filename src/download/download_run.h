// What all downloads have in common: the checks at the beginning, the cancel flag, the trace, the progress, the
// exchange of short answers, and the restart of the printer.
#ifndef VEXO_DOWNLOAD_DOWNLOAD_RUN_H_
#define VEXO_DOWNLOAD_DOWNLOAD_RUN_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "download/source_file.h"
#include "protocol/bytes.h"
#include "protocol/checked_printer.h"
#include "vexo/extend.h"

namespace vexo {

// How a step of a download came out: nothing when the download goes on, else the code that it ends with.
using Ending = std::optional<int32_t>;

// Ends the download that runs in this process, if any, at its next look. From any thread.
void CancelDownload();

class DownloadRun {
 public:
  // Each download starts uncancelled: a request from before is forgotten.
  DownloadRun(VexoPrinterHandle* handle, DownloadProgressCallback progress);
  DownloadRun(const DownloadRun&) = delete;
  DownloadRun& operator=(const DownloadRun&) = delete;

  // The checks that each download begins with, in this order.
  Ending CheckHandle() const;
  Ending OpenFile(const char* name, const char* empty_file_trace);

  SourceFile& file() { return file_; }
  VexoPrinterHandle* handle() const { return handle_; }
  const CheckedPrinter& printer() const { return printer_; }

  // The whole file. Throws std::bad_alloc.
  Ending ReadFile(Bytes* content);

  bool IsCancelled() const;
  Ending CheckCancelled() const;  // Says so in the trace.

  void ReportProgress(int32_t percentage) const;
  void ReportProgress(uint32_t done, uint32_t total) const;  // The percentage is cut to a whole number.

  // Receives and throws away what the printer has already sent.
  void flushInput() const;

  // Reads an answer of `wanted` bytes, 12 at most, which comes in one piece: of an answer in several, *received counts
  // the bytes of the last piece alone, and so many bytes from the answer's start are given, which makes it a wrong
  // answer to everybody. Waits for up to six reads, 200 ms apart.
  //
  // 0; -6 handle or buffer null, bad handle; -309; 0 or -332 with *received 0: nothing came; else the read's failure.
  int32_t readExact(uint8_t* buffer, uint32_t wanted, uint32_t* received) const;

  // Writes the V1 command do with this action. True: it failed.
  bool sendDoCommand(std::string_view action) const;

  // Restarts the printer where its failure is the download's.
  Ending Restart() const;

  // The last words of a download: a host that reads them may have the file.
  void Complete();

 private:
  VexoPrinterHandle* const handle_;
  const DownloadProgressCallback progress_;
  const CheckedPrinter printer_;
  SourceFile file_;
};

// Writes a line to the trace and ends the download with `code`.
Ending Fail(int32_t code, const char* trace);

// An unsigned share of a file: how many pieces of `piece` bytes hold `size` bytes.
uint32_t CountPieces(int32_t size, int32_t piece);

// The file cannot be read any more, or has become shorter: nothing but its own bytes may reach the printer.
inline constexpr char kReadFileFailedTrace[] = "failed:Read File Failed...\n";

inline constexpr std::string_view kResetPrinter = "reset_printer";

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_DOWNLOAD_RUN_H_
