#include "api/contain.h"
#include "download/download_run.h"
#include "download/firmware_download.h"
#include "download/packet_download.h"
#include "download/ymodem_download.h"
#include "vexo/extend.h"

void setCancel(void) { vexo::CancelDownload(); }

int32_t downloadFile(VexoPrinterHandle* handle, const char* fileName, const void* /*reserved*/,
                     DownloadProgressCallback progress) {
  return vexo::ContainOutOfMemory([=] { return vexo::DownloadPackets(handle, fileName, progress); });
}

int32_t DownloadFontFile(VexoPrinterHandle* handle, int32_t packetSize, const char* fileName, const void* /*reserved*/,
                         DownloadProgressCallback progress) {
  return vexo::ContainOutOfMemory([=] { return vexo::DownloadFontPackets(handle, packetSize, fileName, progress); });
}

int32_t DownloadFMWImg(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                       DownloadProgressCallback progress) {
  return vexo::ContainOutOfMemory([=] { return vexo::DownloadFirmware(handle, fileName, descriptor, progress); });
}

int32_t downloadYModem(VexoPrinterHandle* handle, const char* fileName, const char* descriptor,
                       DownloadProgressCallback progress) {
  return vexo::ContainOutOfMemory([=] { return vexo::DownloadYModem(handle, fileName, descriptor, progress); });
}
