// The running account of a download.
#ifndef VEXO_DOWNLOAD_TRACE_H_
#define VEXO_DOWNLOAD_TRACE_H_

namespace vexo {

// printf to the standard output of the process, at once: a host that reads it through a pipe follows the download.
__attribute__((format(printf, 1, 2))) void downloadTrace(const char* format, ...);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_TRACE_H_
