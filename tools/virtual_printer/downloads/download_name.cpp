#include "virtual_printer/downloads/download_name.h"

#include <algorithm>
#include <string_view>

namespace virtual_printer {
namespace {

std::string SafeName(std::string_view host_name) {
  constexpr std::string_view kSafe = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
  const std::size_t separator = host_name.find_last_of("/\\:");
  std::string name(separator == std::string_view::npos ? host_name : host_name.substr(separator + 1));
  std::replace_if(
      name.begin(), name.end(), [&](char c) { return kSafe.find(c) == std::string_view::npos; }, '_');
  return name;
}

}  // namespace

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
