// Downloads files to the printer's loader with the printer's variant of YModem-1K.
#ifndef VEXO_DOWNLOAD_YMODEM_DOWNLOAD_H_
#define VEXO_DOWNLOAD_YMODEM_DOWNLOAD_H_

#include <cstdint>

#include "vexo/extend.h"

namespace vexo {

// Implements downloadYModem (extend.h). Throws std::bad_alloc.
int32_t DownloadYModem(VexoPrinterHandle* handle, const char* file_name, const char* descriptor,
                       DownloadProgressCallback progress);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_YMODEM_DOWNLOAD_H_
