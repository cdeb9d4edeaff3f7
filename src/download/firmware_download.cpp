#include "download/firmware_download.h"

#include <algorithm>

#include "download/download_run.h"
#include "download/trace.h"
#include "platform/clock.h"
#include "port/handle_port.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// A segment is a header, whose bytes 4 to 7 give the length of the body, and the body.
constexpr size_t kHeaderSize = 76;
constexpr size_t kBodyLengthOffset = 4;
constexpr size_t kChunkSize = 1024;

constexpr std::string_view kUpdateModeAction = "dfu";
constexpr uint8_t kAccepted = 0;
constexpr uint32_t kHeaderAnswerDelayMs = 200;
constexpr int32_t kHeaderAnswerTries = 1;
constexpr int32_t kBodyAnswerTries = 100;

constexpr char kDistributed[] = "Successfully distributed...\n";
constexpr char kWriteFailed[] = "failed: WriteData failed...\n";

class FirmwareDownload {
 public:
  FirmwareDownload(DownloadRun* run, const char* descriptor)
      : run_(run), descriptor_(descriptor), size_(static_cast<uint32_t>(run->file().size())) {}

  Ending EnterUpdateMode() const {
    downloadTrace("Enter Upgrade mode...\n");
    run_->flushInput();
    const int32_t written = run_->printer().Write(BuildDoCommand(kUpdateModeAction));
    if (written != VEXO_OK) {
      return Fail(written, "write command failed...\n");
    }
    run_->flushInput();
    return run_->CheckCancelled();
  }

  // A header at the end of the file still gets its body turn.
  //
  // Compatibility: a rest of fewer bytes than a header is sent as a header, filled up with zeros, and ends the image.
  Ending SendSegments() {
    while (consumed_ < size_ || (consumed_ == size_ && header_confirmed_)) {
      if (const Ending end = run_->CheckCancelled()) {
        return end;
      }
      if (const Ending end = header_confirmed_ ? TakeBodyTurn() : TakeHeaderTurn()) {
        return end;
      }
      downloadTrace(kDistributed);
    }
    return std::nullopt;
  }

 private:
  // The printer comes back as a different device before each segment.
  Ending TakeHeaderTurn() {
    uint8_t header[kHeaderSize] = {};
    run_->file().Read(header, sizeof(header));  // Missing bytes stay zero.
    if (ReconnectHandle(run_->handle(), descriptor_) != VEXO_OK) {
      return Fail(VEXO_OK, "Openfail");
    }
    const int32_t written = run_->printer().Write(header, sizeof(header));
    if (written != VEXO_OK) {
      return Fail(written, kWriteFailed);
    }
    platform::SleepMs(kHeaderAnswerDelayMs);
    if (const Ending end = AwaitAcceptance(kHeaderAnswerTries)) {
      return end;
    }
    consumed_ += kHeaderSize;
    body_length_ = ReadLittleEndian32(header + kBodyLengthOffset);
    header_confirmed_ = true;
    return std::nullopt;
  }

  Ending TakeBodyTurn() {
    if (!header_confirmed_) {
      // Compatibility: never reached by SendSegments; the text and its result are kept.
      return Fail(VEXO_OK, "failed: Lower computer response failed...\n");
    }
    const uint64_t body_end = consumed_ + body_length_;
    if (body_end > size_) {
      return std::nullopt;  // Compatibility: an image whose body exceeds the file repeats this turn until setCancel.
    }
    if (const Ending end = SendBody(body_end)) {
      return end;
    }
    // Compatibility: 100 after each body, although the next body starts below it again.
    run_->ReportProgress(100);
    header_confirmed_ = false;
    return AwaitAcceptance(kBodyAnswerTries);
  }

  Ending SendBody(uint64_t body_end) {
    while (consumed_ < body_end) {
      if (const Ending end = run_->CheckCancelled()) {
        return end;
      }
      uint8_t chunk[kChunkSize];
      const size_t wanted = std::min<uint64_t>(kChunkSize, body_end - consumed_);
      // If the file has become shorter, only its own bytes are sent; the printer reports the missing ones.
      const int32_t written = run_->printer().Write(chunk, run_->file().Read(chunk, wanted));
      if (written != VEXO_OK) {
        return Fail(written, kWriteFailed);
      }
      consumed_ += wanted;
      body_sent_ += static_cast<uint32_t>(wanted);
      run_->ReportProgress(body_sent_, size_);
    }
    return std::nullopt;
  }

  // Compatibility: failures end the download with VEXO_OK, as does "Openfail" above. Hosts tell them from success by
  // the trace.
  Ending AwaitAcceptance(int32_t tries) const {
    uint8_t answer = 0;
    uint32_t received = 0;
    for (int32_t i = 0; i < tries && received == 0; ++i) {
      run_->readExact(&answer, 1, &received);
    }
    if (received != 1) {
      return Fail(VEXO_OK, "failed: ReadData failed...\n");
    }
    return answer == kAccepted ? std::nullopt : Fail(VEXO_OK, "failed: ReadData error...\n");
  }

  DownloadRun* const run_;
  const char* const descriptor_;
  const uint32_t size_;
  uint64_t consumed_ = 0;  // Bytes of the file, headers and bodies.
  uint32_t body_sent_ = 0;
  uint32_t body_length_ = 0;
  bool header_confirmed_ = false;
};

}  // namespace

int32_t DownloadFirmware(VexoPrinterHandle* handle, const char* file_name, const char* descriptor,
                         DownloadProgressCallback progress) {
  DownloadRun run(handle, progress);
  if (const Ending end = run.CheckHandle()) {
    return *end;
  }
  if (const Ending end = run.OpenFile(file_name, "failed:file is null.")) {
    return *end;
  }
  FirmwareDownload download(&run, descriptor);
  if (const Ending end = download.EnterUpdateMode()) {
    return *end;
  }
  if (const Ending end = download.SendSegments()) {
    return *end;
  }
  run.file().Close();
  downloadTrace("Download firmware complete...\n");
  return run.Restart().value_or(VEXO_OK);
}

}  // namespace vexo
