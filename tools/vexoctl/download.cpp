#include "vexoctl/download.h"

#include <windows.h>

#include <atomic>
#include <utility>

#include "vexo/error.h"
#include "vexoctl/captured_output.h"
#include "vexoctl/console_text.h"
#include "vexoctl/interrupt.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

constexpr int32_t kWhole = 100;
constexpr int64_t kNever = -1;
constexpr int64_t kSecondInterruptMs = 1000;
constexpr UINT kFailedStatus = 1;

Download* running;
std::atomic<int64_t> interrupted_at;  // A tick count.

bool IsInterrupted() { return interrupted_at != kNever; }

}  // namespace

Download::Download(std::string name, DownloadPieces pieces, bool show_trace, const Settings& settings)
    : name_(std::move(name)),
      pieces_(pieces),
      show_trace_(show_trace),
      settings_(settings),
      trace_(pieces),
      progress_(/*bar=*/!show_trace, settings) {
  running = this;
  interrupted_at = kNever;
}

Download::~Download() { running = nullptr; }

void Download::Run(const Call& call) {
  const InterruptWatch interrupts(Cancel);
  int32_t result = CallLibrary(call);
  if (result == VEXO_OK && pieces_.kind == DownloadPieces::Kind::kSegments) {
    result = trace_.FirmwareResult();
  }
  if (result != VEXO_OK) {
    throw MakeFailure(result);
  }
  progress_.Show(kWhole);
}

int32_t Download::CallLibrary(const Call& call) {
  CapturedOutput trace([this](std::string_view line) { HandleLine(line); });
  const int32_t result = call(ReportPercentage);
  trace.End();  // The account is complete now.
  return result;
}

// A second interrupt ends the process: the library may be in a wait of minutes which cannot be cancelled. A key that is
// held down repeats itself, which is no second interrupt.
void Download::Cancel() {
  setCancel();
  int64_t first = kNever;
  const auto now = static_cast<int64_t>(GetTickCount64());
  if (!interrupted_at.compare_exchange_strong(first, now) && now - first >= kSecondInterruptMs) {
    TerminateProcess(GetCurrentProcess(), kFailedStatus);
  }
}

// On the thread of the capture, which has the account to itself until the download has ended.
void Download::HandleLine(std::string_view line) {
  if (IsInterrupted()) {
    setCancel();  // Again: the library forgets what was cancelled before its download began.
  }
  trace_.AddLine(line);
  if (show_trace_) {
    const std::string text = Utf8FromAnsi(line);
    WriteError((settings_.json ? nlohmann::ordered_json{{"trace", text}}.dump() : text) + "\n");
  }
}

void Download::ReportPercentage(int32_t percentage) { running->ShowPercentage(percentage); }

// Of a firmware image, 100 is what the library reports when it has sent the body of a segment, and then it goes back to
// the share of the whole.
void Download::ShowPercentage(int32_t percentage) {
  if (pieces_.kind == DownloadPieces::Kind::kPackages || percentage < kWhole) {
    progress_.Show(percentage);
    return;
  }
  ++segments_sent_;
  progress_.ShowStep("segment " + std::to_string(segments_sent_) + " of " + std::to_string(pieces_.count) + " sent");
}

// Cancelling while a package awaits its answer looks like a bad answer to the library.
bool Download::IsCancelled(int32_t result) const {
  const bool in_package = pieces_.kind == DownloadPieces::Kind::kPackages;
  return IsInterrupted() &&
         (result == VEXO_ERROR_DOWNLOAD_CANCELLED || (result == VEXO_ERROR_DOWNLOAD_BAD_ANSWER && in_package));
}

Failure Download::MakeFailure(int32_t result) const {
  const bool cancelled = IsCancelled(result);
  std::string action = "cannot download " + name_ + " to " + settings_.PrinterName() + ", ";
  action += (cancelled ? "interrupted " : "stopped ") + trace_.Place();
  if (const std::optional<int> percent = progress_.percent()) {
    action += ", " + std::to_string(*percent) + "%";
  }
  return {action, cancelled ? VEXO_ERROR_DOWNLOAD_CANCELLED : result};
}

}  // namespace vexoctl
