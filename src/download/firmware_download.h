// Sends firmware images, segment by segment, to a printer in update mode.
#ifndef VEXO_DOWNLOAD_FIRMWARE_DOWNLOAD_H_
#define VEXO_DOWNLOAD_FIRMWARE_DOWNLOAD_H_

#include <cstdint>

#include "vexo/extend.h"

namespace vexo {

// Implements DownloadFMWImg (extend.h). Throws std::bad_alloc.
int32_t DownloadFirmware(VexoPrinterHandle* handle, const char* file_name, const char* descriptor,
                         DownloadProgressCallback progress);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_FIRMWARE_DOWNLOAD_H_
