#include "vexoctl/support/download_trace.h"

#include <charconv>

#include "vexo/error.h"

namespace vexoctl {
namespace {

struct TraceStep {
  std::string_view line;
  const char* place;  // Printed behind "stopped ".
};

// A step without a place: the count of pieces is the place.
constexpr TraceStep kPackageSteps[] = {
    {"Enter Upgrade mode...", "at the switch into the download mode"},
    {"Shake hands before sending...", "at the handshake"},
    {"Prepare to send packet headers...", "at the file header"},
    {"Ready to send file...", nullptr},
    {"Sending file completed and Shake hands...", "at the end of the file"},
    {"A Empty packet at the end of sending...", "at the closing package"},
    {"End of Sending flag...", "at the end of the transmission"},
    {"restart printer...", "at the restart"},
};
constexpr TraceStep kSegmentSteps[] = {
    {"Enter Upgrade mode...", nullptr},
    {"write command failed...", "at the switch into the update mode"},
    {"Openfail", "at the connection to the printer in its update mode"},
    {"Download firmware complete...", "at the restart"},
};

constexpr std::string_view kReconnect = "desc = ";
constexpr std::string_view kPackage = "package ";
constexpr std::string_view kCancelled = "Cancel...";
constexpr std::string_view kSegmentPartTaken = "Successfully distributed...";

struct FirmwareEnding {
  std::string_view line;
  int32_t result;
};

constexpr FirmwareEnding kFirmwareEndings[] = {
    {"Successfully restarted the device...", VEXO_OK},
    {"Openfail", VEXO_ERROR_IO_OPEN_FAILED},
    {"failed: ReadData failed...", VEXO_ERROR_DOWNLOAD_NO_ANSWER},
    {"failed: ReadData error...", VEXO_ERROR_DOWNLOAD_BAD_ANSWER},
    {"failed: Lower computer response failed...", VEXO_ERROR_DOWNLOAD_BAD_ANSWER},
};

bool StartsWith(std::string_view line, std::string_view start) { return line.substr(0, start.size()) == start; }

}  // namespace

DownloadTrace::DownloadTrace(DownloadPieces pieces) : pieces_(pieces), firmware_result_(VEXO_ERROR_IO) {}

void DownloadTrace::AddLine(std::string_view line) {
  NoteStep(line);
  for (const FirmwareEnding& ending : kFirmwareEndings) {
    if (line == ending.line) {
      firmware_result_ = ending.result;
    }
  }
  if (StartsWith(line, kPackage)) {
    // All packages before this one have been confirmed.
    std::from_chars(line.data() + kPackage.size(), line.data() + line.size(), confirmed_);
    in_package_ = true;
  } else if (line == kSegmentPartTaken || (line == kCancelled && in_package_)) {
    ++confirmed_;  // Cancelling takes effect between two packages.
  }
}

void DownloadTrace::NoteStep(std::string_view line) {
  const auto note = [this, line](const auto& steps) {
    for (const TraceStep& step : steps) {
      if (line == step.line) {
        step_ = step.place;
      }
    }
  };
  if (pieces_.kind == DownloadPieces::Kind::kSegments) {
    note(kSegmentSteps);
  } else if (StartsWith(line, kReconnect)) {
    step_ = "at the connection to the loader";
  } else {
    note(kPackageSteps);
  }
}

std::string DownloadTrace::Place() const {
  if (step_ != nullptr) {
    return step_;
  }
  const std::string of_all = " of " + std::to_string(pieces_.count);
  if (pieces_.kind == DownloadPieces::Kind::kPackages) {
    return "after " + std::to_string(confirmed_) + of_all + " packages";
  }
  constexpr size_t kPartsOfSegment = 2;
  const char* const part = confirmed_ % kPartsOfSegment == 0 ? "header" : "body";
  return std::string("at the ") + part + " of segment " + std::to_string(confirmed_ / kPartsOfSegment + 1) + of_all;
}

}  // namespace vexoctl
