#ifndef VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_FAULTS_H_
#define VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_FAULTS_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace virtual_printer {

// A point of a download at which the printer answers.
struct DownloadStep {
  enum class Name {
    kMode,
    kPackage,  // A package, a data block, or a part of a firmware image; counted from 0.
    kHandshake,
    kHeader,
    kEnd,
    kClosing,
  };

  Name name = Name::kPackage;
  std::uint32_t index = 0;  // Of a package.
};

enum class DownloadFaultKind {
  kWrongEcho,    // The answer names another package.
  kBadChecksum,  // The answer has a wrong checksum.
  kSilence,      // There is no answer.
  kRefuse,       // The answer is a refusal, and the data is discarded.
  kSplit,        // The answer comes in two pieces.
  kDrop,         // The connection is dropped without an answer.
};

struct DownloadFault {
  DownloadFaultKind kind = DownloadFaultKind::kRefuse;
  DownloadStep step;
  std::uint32_t count = 1;  // Number of answers to this step that fail.
};

// The pause inside an answer that comes in two pieces. Hosts wait less than this before they read.
constexpr std::chrono::milliseconds kPieceSplitPause{100};

// Parses KIND@STEP or KIND@STEPxCOUNT.
std::optional<DownloadFault> ParseDownloadFault(std::string_view text);

// The faults that have not happened yet.
class DownloadFaults {
 public:
  explicit DownloadFaults(std::vector<DownloadFault> faults) : faults_(std::move(faults)) {}

  // Returns the fault of this answer to the step, if any, and counts it as done.
  std::optional<DownloadFaultKind> Take(DownloadStep step);

 private:
  std::vector<DownloadFault> faults_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_FAULTS_H_
