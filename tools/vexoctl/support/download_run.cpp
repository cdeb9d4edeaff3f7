#include "vexoctl/support/download_run.h"

#include <windows.h>

#include <atomic>
#include <optional>
#include <utility>

#include "vexoctl/console/interrupt.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/support/captured_output.h"

namespace vexoctl {
namespace {

constexpr int32_t kComplete = 100;
constexpr int64_t kNever = -1;

std::atomic<int64_t> interrupted_at;  // A tick count, or kNever.

bool IsInterrupted() { return interrupted_at != kNever; }

// Handles Ctrl-C. A second one ends the process, because the library may be in a wait of minutes that cannot be
// cancelled. The repetitions of a key that is held down are not a second one.
void CancelDownload() {
  constexpr int64_t kSecondInterruptMs = 1000;
  constexpr UINT kFailedStatus = 1;
  setCancel();
  int64_t first = kNever;
  const auto now = static_cast<int64_t>(GetTickCount64());
  if (!interrupted_at.compare_exchange_strong(first, now) && now - first >= kSecondInterruptMs) {
    TerminateProcess(GetCurrentProcess(), kFailedStatus);
  }
}

}  // namespace

DownloadRun::DownloadRun(std::string name, DownloadPieces pieces, bool show_trace, const Options& options)
    : name_(std::move(name)),
      pieces_(pieces),
      show_trace_(show_trace),
      options_(options),
      trace_(pieces),
      progress_(/*bar=*/!show_trace, options) {
  interrupted_at = kNever;
}

void DownloadRun::Run(const Call& call) {
  const InterruptWatch interrupts(CancelDownload);
  int32_t result = CallLibrary(call);
  if (result == VEXO_OK && pieces_.kind == DownloadPieces::Kind::kSegments) {
    result = trace_.FirmwareResult();
  }
  if (result != VEXO_OK) {
    throw MakeFailure(result);
  }
  progress_.Show(kComplete);
}

int32_t DownloadRun::CallLibrary(const Call& call) {
  CapturedOutput output([this](std::string_view line) { HandleTraceLine(line); });
  std::error_code error;
  call([this](int32_t percentage) { ShowPercentage(percentage); }, &error);
  output.End();  // The trace is complete now.
  return error.value();
}

// Runs on the thread of the capture. No other thread uses the trace before the download has ended.
void DownloadRun::HandleTraceLine(std::string_view line) {
  if (IsInterrupted()) {
    setCancel();  // Again: a cancellation before the library's download began has no effect.
  }
  trace_.AddLine(line);
  if (show_trace_) {
    const std::string text = Utf8FromAnsi(line);
    WriteError((options_.json ? nlohmann::ordered_json{{"trace", text}}.dump() : text) + "\n");
  }
}

// For a firmware image the library reports 100 after the body of each segment, then again the share of the whole.
void DownloadRun::ShowPercentage(int32_t percentage) {
  if (pieces_.kind == DownloadPieces::Kind::kPackages || percentage < kComplete) {
    progress_.Show(percentage);
    return;
  }
  ++segments_sent_;
  progress_.ShowStep("segment " + std::to_string(segments_sent_) + " of " + std::to_string(pieces_.count) + " sent");
}

// The library reports a cancellation while a package awaits its answer as a bad answer.
bool DownloadRun::IsCancelled(int32_t result) const {
  const bool in_package = pieces_.kind == DownloadPieces::Kind::kPackages;
  return IsInterrupted() &&
         (result == VEXO_ERROR_DOWNLOAD_CANCELLED || (result == VEXO_ERROR_DOWNLOAD_BAD_ANSWER && in_package));
}

Failure DownloadRun::MakeFailure(int32_t result) const {
  const bool cancelled = IsCancelled(result);
  std::string action = "cannot download " + name_ + " to " + options_.PrinterName() + ", ";
  action += (cancelled ? "interrupted " : "stopped ") + trace_.Place();
  if (const std::optional<int> percent = progress_.percent()) {
    action += ", " + std::to_string(*percent) + "%";
  }
  return {action, cancelled ? VEXO_ERROR_DOWNLOAD_CANCELLED : result};
}

}  // namespace vexoctl
