#include "virtual_printer/downloads/download_store.h"

#include <fstream>
#include <system_error>

#include "virtual_printer/downloads/download_name.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

// The file has its name only when it is whole: a script may wait for it.
bool WriteFile(const std::filesystem::path& path, const Bytes& data) {
  std::filesystem::path part = path;
  part += ".part";
  std::ofstream file(part, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
  file.close();
  std::error_code error;
  if (file) {
    std::filesystem::rename(part, path, error);
  }
  if (!file || error) {
    std::filesystem::remove(part, error);
    return false;
  }
  return true;
}

}  // namespace

std::string DownloadStore::Store(const CompletedDownload& download) {
  const std::string size = CountOfBytes(download.data.size());
  if (folder_.empty()) {
    return "download complete, " + size;
  }
  const std::string name = FreeName(download);
  const bool stored = WriteFile(folder_ / name, download.data);
  std::string words = (stored ? "stored " : "cannot store ") + name + ", " + size;
  out_ << "virtual printer " << words << std::endl;
  return words;
}

std::string DownloadStore::FreeName(const CompletedDownload& download) const {
  std::error_code ignored;
  int number = 1;
  while (std::filesystem::exists(folder_ / DownloadFileName(download, number), ignored)) {
    ++number;
  }
  return DownloadFileName(download, number);
}

}  // namespace virtual_printer
