#include "download/packet_download.h"

#include <algorithm>
#include <limits>

#include "download/download_run.h"
#include "download/package.h"
#include "download/trace.h"
#include "platform/clock.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr int32_t kFilePacketSize = 2048;
constexpr int32_t kMaxPacketSize = std::numeric_limits<uint16_t>::max();  // Limited by the 16-bit count of a package.
constexpr int32_t kAttempts = 4;
constexpr uint32_t kAnswerDelayMs = 20;
constexpr int32_t kAnswerReads = 31;

constexpr uint8_t kFileMode[] = {0x12, 0x46};
constexpr std::string_view kFontModeAction = "font_download_quick";
constexpr uint8_t kModeEntered[] = {'O', 'K'};
constexpr uint8_t kFontEnd[] = {'^', 'E', 'N', 'D'};

// The steps that file and font downloads share, from the mode switch to the last package.
class PacketDownload {
 public:
  PacketDownload(DownloadRun* run, int32_t packet_size, Filler filler)
      : run_(run), packet_size_(packet_size), filler_(filler) {}

  Ending Prepare() {
    package_ = MakePackage(static_cast<size_t>(packet_size_));
    if (const Ending end = run_->ReadFile(&content_)) {
      return end;
    }
    count_ = CountPieces(run_->file().size(), packet_size_);
    return count_ == 0 ? Fail(VEXO_ERROR_DOWNLOAD_EMPTY, "failed:no packages...\n") : std::nullopt;
  }

  Ending EnterMode(const Bytes& mode_switch) const {
    downloadTrace("Enter Upgrade mode...\n");
    run_->flushInput();
    const int32_t written = run_->printer().Write(mode_switch);
    if (written != VEXO_OK) {
      return Fail(written, "failed: WriteData failed...\n");
    }
    uint8_t answer[sizeof(kModeEntered)] = {};
    uint32_t received = 0;
    run_->readExact(answer, sizeof(answer), &received);
    const bool entered = received >= sizeof(answer) && std::equal(answer, answer + sizeof(answer), kModeEntered);
    return entered ? std::nullopt : Fail(VEXO_ERROR_DOWNLOAD_MODE, "failed:Enter Mode Failed...\n");
  }

  Ending SendPackages() {
    run_->flushInput();
    downloadTrace("Ready to send file...\n");
    run_->ReportProgress(0);
    for (uint32_t i = 0; i < count_; ++i) {
      if (const Ending end = run_->CheckCancelled()) {
        return end;
      }
      downloadTrace("package %d\n", static_cast<int>(i));
      Fill(i);
      if (const Ending end = SendUntilConfirmed()) {
        return end;
      }
      run_->ReportProgress(i, count_);
    }
    run_->ReportProgress(100);
    return std::nullopt;
  }

 private:
  void Fill(uint32_t index) {
    const auto packet_size = static_cast<size_t>(packet_size_);
    const size_t start = index * packet_size;
    FillPackage(&package_, index, content_.data() + start, std::min(content_.size() - start, packet_size), filler_);
  }

  Ending SendUntilConfirmed() const {
    for (int32_t attempt = 1; !SendOnce(); ++attempt) {
      if (attempt == kAttempts || run_->IsCancelled()) {
        // Compatibility: a cancel request during the answer also ends with this code, not with
        // VEXO_ERROR_DOWNLOAD_CANCELLED.
        return Fail(VEXO_ERROR_DOWNLOAD_BAD_ANSWER, "failed:Slave Response Failed.........\n");
      }
    }
    return std::nullopt;
  }

  bool SendOnce() const {
    if (run_->printer().Write(package_) != VEXO_OK) {
      downloadTrace("failed:WriteData Failed...\n");
      return false;
    }
    platform::SleepMs(kAnswerDelayMs);
    uint8_t answer[kPackageAnswerSize] = {};
    if (!CollectAnswer(answer)) {
      return false;
    }
    const PackageAnswer verdict = CheckAnswer(package_, answer);
    if (verdict == PackageAnswer::kBadChecksum) {
      downloadTrace("failed:Slave Response Failed...\n");
    }
    return verdict == PackageAnswer::kConfirmed;
  }

  // Unlike the answer to the mode switch, this one may arrive in pieces.
  bool CollectAnswer(uint8_t* answer) const {
    uint32_t total = 0;
    for (int32_t i = 0; i < kAnswerReads && total < kPackageAnswerSize && !run_->IsCancelled(); ++i) {
      uint32_t received = 0;
      run_->printer().Read(answer + total, kPackageAnswerSize - total, &received);
      total += received;
    }
    return total >= kPackageAnswerSize;
  }

  DownloadRun* const run_;
  const int32_t packet_size_;
  const Filler filler_;
  Bytes content_;
  Bytes package_;
  uint32_t count_ = 0;
};

// Compatibility: unlike a font, a file whose restart command fails counts as downloaded.
int32_t RestartAfterFile(DownloadRun* run) {
  downloadTrace("restart printer...\n");
  run->sendDoCommand(kResetPrinter);
  const int32_t closed = run->printer().Close();
  run->Complete();  // Even if the handle has become unusable.
  return closed;
}

int32_t RestartAfterFont(DownloadRun* run) {
  downloadTrace("restart printer...\n");
  run->printer().Write(kFontEnd, sizeof(kFontEnd));
  if (const Ending end = run->Restart()) {
    return *end;
  }
  run->printer().Close();
  run->Complete();
  return VEXO_OK;
}

}  // namespace

int32_t DownloadPackets(VexoPrinterHandle* handle, const char* file_name, DownloadProgressCallback progress) {
  DownloadRun run(handle, progress);
  if (const Ending end = run.CheckHandle()) {
    return *end;
  }
  // Compatibility: hosts match this doubled text.
  if (const Ending end = run.OpenFile(file_name, "failed:file is null.file is null.")) {
    return *end;
  }
  PacketDownload download(&run, kFilePacketSize, Filler::kZeros);
  if (const Ending end = download.Prepare()) {
    return *end;
  }
  if (const Ending end = download.EnterMode({std::begin(kFileMode), std::end(kFileMode)})) {
    return *end;
  }
  if (const Ending end = download.SendPackages()) {
    return *end;
  }
  return RestartAfterFile(&run);
}

int32_t DownloadFontPackets(VexoPrinterHandle* handle, int32_t packet_size, const char* file_name,
                            DownloadProgressCallback progress) {
  DownloadRun run(handle, progress);
  if (const Ending end = run.CheckHandle()) {
    return *end;
  }
  if (packet_size < 1 || packet_size > kMaxPacketSize) {
    return *Fail(VEXO_ERROR_PARAMETER, "error parameters.");
  }
  if (const Ending end = run.OpenFile(file_name, "failed: The file is empty.")) {
    return *end;
  }
  PacketDownload download(&run, packet_size, Filler::kPreviousPackage);
  if (const Ending end = download.Prepare()) {
    return *end;
  }
  if (const Ending end = download.EnterMode(BuildDoCommand(kFontModeAction))) {
    return *end;
  }
  if (const Ending end = download.SendPackages()) {
    return *end;
  }
  return RestartAfterFont(&run);
}

}  // namespace vexo
