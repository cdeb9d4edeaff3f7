// Downloads files and fonts in numbered packages.
#ifndef VEXO_DOWNLOAD_PACKET_DOWNLOAD_H_
#define VEXO_DOWNLOAD_PACKET_DOWNLOAD_H_

#include <cstdint>

#include "vexo/extend.h"

namespace vexo {

// Implement downloadFile and DownloadFontFile (extend.h). Throw std::bad_alloc.
int32_t DownloadPackets(VexoPrinterHandle* handle, const char* file_name, DownloadProgressCallback progress);
int32_t DownloadFontPackets(VexoPrinterHandle* handle, int32_t packet_size, const char* file_name,
                            DownloadProgressCallback progress);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_PACKET_DOWNLOAD_H_
