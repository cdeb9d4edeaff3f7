#ifndef VEXOCTL_SUPPORT_DOWNLOAD_TRACE_H_
#define VEXOCTL_SUPPORT_DOWNLOAD_TRACE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vexoctl {

// The parts of a download that are confirmed one by one.
struct DownloadPieces {
  enum class Kind {
    kPackages,
    kSegments,  // Of a firmware image.
  };

  Kind kind = Kind::kPackages;
  size_t count = 0;
};

// Reads the trace that the library writes about a download: how far it came, and whether the printer took a firmware
// image, which the library's result does not tell.
class DownloadTrace {
 public:
  explicit DownloadTrace(DownloadPieces pieces);

  void AddLine(std::string_view line);

  // Where the download is, printed behind "stopped ".
  std::string Place() const;

  // The result of a firmware image for which the library's result is VEXO_OK: a success only if the printer has taken
  // it and has been told to restart.
  int32_t FirmwareResult() const { return firmware_result_; }

 private:
  void NoteStep(std::string_view line);

  const DownloadPieces pieces_;
  const char* step_ = "before anything was sent";  // Null: pieces are being sent.
  size_t confirmed_ = 0;                           // Packages, or headers and bodies of segments.
  bool in_package_ = false;
  int32_t firmware_result_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_DOWNLOAD_TRACE_H_
