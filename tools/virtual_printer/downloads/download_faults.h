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
  kBadChecksum,  // The answer's checksum is wrong.
  kSilence,      // No answer.
  kRefuse,       // The answer refuses, and nothing is taken.
  kSplit,        // The answer comes in two pieces.
  kDrop,         // The connection is dropped in place of an answer.
};

struct DownloadFault {
  DownloadFaultKind kind = DownloadFaultKind::kRefuse;
  DownloadStep step;
  std::uint32_t count = 1;  // Of answers to this step that go wrong.
};

// The pause inside an answer that comes in two pieces; longer than hosts wait before they read.
constexpr std::chrono::milliseconds kPieceSplitPause{100};

// Reads KIND@STEP or KIND@STEPxCOUNT.
std::optional<DownloadFault> ParseDownloadFault(std::string_view text);

// The faults that are still to come.
class DownloadFaults {
 public:
  explicit DownloadFaults(std::vector<DownloadFault> faults) : faults_(std::move(faults)) {}

  // What is to go wrong with the answer to this step, now.
  std::optional<DownloadFaultKind> Take(DownloadStep step);

 private:
  std::vector<DownloadFault> faults_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_DOWNLOAD_FAULTS_H_
