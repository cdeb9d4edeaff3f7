// The trace of a download.
#ifndef VEXO_DOWNLOAD_TRACE_H_
#define VEXO_DOWNLOAD_TRACE_H_

namespace vexo {

// Compatibility: printf to the process's standard output, the only diagnostic output of the library. Flushed at once,
// because hosts follow the download by reading it through a pipe. Hosts parse these texts: do not reword them.
__attribute__((format(printf, 1, 2))) void downloadTrace(const char* format, ...);

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_TRACE_H_
