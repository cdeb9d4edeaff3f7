#include <new>

#include "download/firmware_download.h"
#include "download/packet_download.h"
#include "download/session.h"
#include "download/ymodem_download.h"
#include "vexo/extend.h"

namespace {

// A download without memory ends like any other failure; C hosts cannot take the exception.
template <typename Download>
int32_t Run(Download download) {
  try {
    return download();
  } catch (const std::bad_alloc&) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
}

}  // namespace

void setCancel(void) { vexo::CancelDownload(); }

int32_t downloadFile(VexoPrinterHandle* handle, const char* fileName, const void* /*reserved*/,
                     DownloadProgressCallback progress) {
  return Run([=] { return vexo::DownloadPackets(handle, fileName, progress); });
}

int32_t DownloadFontFile(VexoPrinterHandle* handle, int32_t packetSize, const char* fileName, const void* /*reserved*/,
                         DownloadProgressCallback progress) {
  return Run([=] { return vexo::DownloadFontPackets(handle, packetSize, fileName, progress); });
}

int32_t DownloadFMWImg(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                       DownloadProgressCallback progress) {
  return Run([=] { return vexo::DownloadFirmware(handle, fileName, descriptor, progress); });
}

int32_t downloadYModem(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                       DownloadProgressCallback progress) {
  return Run([=] { return vexo::DownloadYModem(handle, fileName, descriptor, progress); });
}
