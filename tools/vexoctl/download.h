#ifndef VEXOCTL_DOWNLOAD_H_
#define VEXOCTL_DOWNLOAD_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "vexo/extend.h"
#include "vexoctl/download_trace.h"
#include "vexoctl/failure.h"
#include "vexoctl/percent_progress.h"
#include "vexoctl/settings.h"

namespace vexoctl {

// A download by the library: shows how far it is, cancels it on Ctrl-C, and finds out how it ended. One at a time.
class Download {
 public:
  // Calls the library. @return its result.
  using Call = std::function<int32_t(DownloadProgressCallback progress)>;

  // @param name       of what is downloaded, for messages.
  // @param show_trace show the library's own account, too, on the standard error stream.
  Download(std::string name, DownloadPieces pieces, bool show_trace, const Settings& settings);
  ~Download();
  Download(const Download&) = delete;
  Download& operator=(const Download&) = delete;

  // Throws a Failure unless the printer has taken everything.
  void Run(const Call& call);

 private:
  // Neither the library nor the console tells whom it calls.
  static void ReportPercentage(int32_t percentage);
  static void Cancel();

  int32_t CallLibrary(const Call& call);
  void HandleLine(std::string_view line);
  void ShowPercentage(int32_t percentage);
  bool IsCancelled(int32_t result) const;
  Failure MakeFailure(int32_t result) const;

  const std::string name_;
  const DownloadPieces pieces_;
  const bool show_trace_;
  const Settings& settings_;
  DownloadTrace trace_;
  PercentProgress progress_;
  size_t segments_sent_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_DOWNLOAD_H_
