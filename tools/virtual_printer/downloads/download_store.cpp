#include "virtual_printer/downloads/download_store.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <system_error>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {
namespace {

// The file gets its name when it is complete, because scripts wait for it.
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

std::string SafeName(std::string_view host_name) {
  constexpr std::string_view kSafe = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
  const std::size_t separator = host_name.find_last_of("/\\:");
  std::string name(separator == std::string_view::npos ? host_name : host_name.substr(separator + 1));
  std::replace_if(
      name.begin(), name.end(), [&](char c) { return kSafe.find(c) == std::string_view::npos; }, '_');
  return name;
}

}  // namespace

std::string DownloadStore::Store(const CompletedDownload& download) {
  const std::string size = CountOfBytes(download.data.size());
  if (folder_.empty()) {
    return "download complete, " + size;
  }
  const std::string name = FreeName(download);
  const bool stored = WriteFile(folder_ / name, download.data);
  std::string note = (stored ? "stored " : "cannot store ") + name + ", " + size;
  out_ << "virtual printer " << note << std::endl;
  return note;
}

std::string DownloadStore::FreeName(const CompletedDownload& download) const {
  std::error_code ignored;
  int number = 1;
  while (std::filesystem::exists(folder_ / DownloadFileName(download, number), ignored)) {
    ++number;
  }
  return DownloadFileName(download, number);
}

std::string DownloadFileName(const CompletedDownload& download, int number) {
  const std::string counted = "-" + std::to_string(number);
  switch (download.kind) {
    case DownloadKind::kFile:
      return "file" + counted + ".bin";
    case DownloadKind::kFont:
      return "font" + counted + ".bin";
    case DownloadKind::kFirmware:
      return "firmware" + counted + ".bin";
    case DownloadKind::kYmodem:
      break;
  }
  return "ymodem-" + SafeName(download.host_name) + (number == 1 ? std::string() : counted) + ".bin";
}

}  // namespace virtual_printer
