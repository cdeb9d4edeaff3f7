#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_

#include <filesystem>
#include <ostream>
#include <string>
#include <utility>

#include "virtual_printer/downloads/download.h"

namespace virtual_printer {

// Stores downloads as files in a folder, without ever overwriting a file.
class DownloadStore {
 public:
  // Prints a line on the stream for each download, which scripts wait for. With an empty folder nothing is stored or
  // printed. The stream must outlive the store.
  DownloadStore(std::filesystem::path folder, std::ostream& out) : folder_(std::move(folder)), out_(out) {}

  // Returns a note for the trace.
  std::string Store(const CompletedDownload& download);

 private:
  std::string FreeName(const CompletedDownload& download) const;

  const std::filesystem::path folder_;
  std::ostream& out_;
};

// The name of the file for a download; numbers from 1 give alternatives if it is taken: file-1.bin,
// ymodem-logo.bmp.bin, ymodem-logo.bmp-2.bin. A host's own name cannot lead out of the folder or to a device.
std::string DownloadFileName(const CompletedDownload& download, int number);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_
