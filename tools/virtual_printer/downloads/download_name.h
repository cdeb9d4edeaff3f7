#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_NAME_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_NAME_H_

#include <string>

#include "virtual_printer/downloads/download.h"

namespace virtual_printer {

// The name under which a download is kept, and others if it is taken: the numbers count from 1. A host's own name never
// leads out of the folder, nor to a device: file-1.bin, ymodem-logo.bmp.bin, ymodem-logo.bmp-2.bin.
std::string DownloadFileName(const CompletedDownload& download, int number);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_NAME_H_
