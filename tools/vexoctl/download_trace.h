#ifndef VEXOCTL_DOWNLOAD_TRACE_H_
#define VEXOCTL_DOWNLOAD_TRACE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vexoctl {

// What a download is made of.
struct DownloadPieces {
  enum class Kind {
    kPackages,
    kSegments,  // Of a firmware image.
  };

  Kind kind = Kind::kPackages;
  size_t count = 0;
};

// What the library's account of a download says, line by line: how far it came, and how a firmware image fared, for
// which the library's result does not tell success from failure.
class DownloadTrace {
 public:
  explicit DownloadTrace(DownloadPieces pieces);

  void AddLine(std::string_view line);

  // Where the download is, to be read after "stopped ".
  std::string Place() const;

  // Of a firmware image that the library had no complaint about: success only if the printer has taken it and has been
  // told to restart.
  int32_t FirmwareResult() const { return firmware_result_; }

 private:
  void NoteStep(std::string_view line);

  const DownloadPieces pieces_;
  const char* step_ = "before anything was sent";  // Null: the pieces are on their way.
  size_t confirmed_ = 0;                           // Packages, or headers and bodies of segments.
  bool in_package_ = false;
  int32_t firmware_result_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_DOWNLOAD_TRACE_H_
