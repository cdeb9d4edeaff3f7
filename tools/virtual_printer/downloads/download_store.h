#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_

#include <filesystem>
#include <ostream>
#include <string>
#include <utility>

#include "virtual_printer/downloads/download.h"

namespace virtual_printer {

// Keeps what hosts download as files in a folder. It never overwrites one.
class DownloadStore {
 public:
  // Says on the stream what it stores, for scripts that wait for it. The stream must outlive the store. Without a
  // folder, nothing is stored.
  DownloadStore(std::filesystem::path folder, std::ostream& out) : folder_(std::move(folder)), out_(out) {}

  // Gives the words for the trace.
  std::string Store(const CompletedDownload& download);

 private:
  std::string FreeName(const CompletedDownload& download) const;

  const std::filesystem::path folder_;
  std::ostream& out_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_STORE_H_
