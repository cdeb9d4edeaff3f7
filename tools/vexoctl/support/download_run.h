#ifndef VEXOCTL_SUPPORT_DOWNLOAD_RUN_H_
#define VEXOCTL_SUPPORT_DOWNLOAD_RUN_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "vexo/printer.hpp"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/options.h"
#include "vexoctl/console/progress.h"
#include "vexoctl/support/download_trace.h"

namespace vexoctl {

// Runs a download of the library: shows its progress, cancels it on Ctrl-C, and finds out how it ended. One at a time.
class DownloadRun {
 public:
  // Calls the library.
  using Call = std::function<void(const vexo::ProgressListener& progress, std::error_code* error)>;

  // @param name       of the file, for messages.
  // @param show_trace also write the library's trace to the standard error output.
  DownloadRun(std::string name, DownloadPieces pieces, bool show_trace, const Options& options);

  // Throws a Failure unless the printer has taken everything.
  void Run(const Call& call);

 private:
  int32_t CallLibrary(const Call& call);
  void HandleTraceLine(std::string_view line);
  void ShowPercentage(int32_t percentage);
  bool IsCancelled(int32_t result) const;
  Failure MakeFailure(int32_t result) const;

  const std::string name_;
  const DownloadPieces pieces_;
  const bool show_trace_;
  const Options& options_;
  DownloadTrace trace_;
  PercentProgress progress_;
  size_t segments_sent_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_DOWNLOAD_RUN_H_
