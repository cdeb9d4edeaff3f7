#include "download/ymodem_download.h"

#include <algorithm>
#include <cstring>

#include "download/download_run.h"
#include "download/trace.h"
#include "download/ymodem_block.h"
#include "platform/clock.h"
#include "port/bounded_text.h"
#include "port/device_uri.h"
#include "port/handle_port.h"
#include "protocol/reply_reader.h"
#include "session/port_parameter.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint8_t kModeSwitch[] = {0x1D, 0x75, 0x55, 0xAA};
constexpr uint8_t kStartRequest = '1';
constexpr uint8_t kReady = 'C';
constexpr uint8_t kAcknowledged = 0x06;
constexpr uint8_t kEndOfFile = 0x04;
constexpr uint8_t kEndOfTransfer = '3';

constexpr uint32_t kSwitchDelayMs = 1000;
constexpr int32_t kConnectAttempts = 20;
constexpr uint32_t kConnectPauseMs = 500;
constexpr uint32_t kHandshakeDelayMs = 500;
constexpr int32_t kHeaderAnswerReads = 6;
constexpr uint32_t kHeaderAnswerPauseMs = 1000;
constexpr uint32_t kHeaderAnswerSize = 2;
constexpr uint32_t kBlockDelayMs = 50;
constexpr uint32_t kBlockAnswerSize = 32;
constexpr int32_t kBlockAnswerTries = 6;
constexpr uint32_t kEndDelayMs = 200;

Ending BadAnswer() { return Fail(VEXO_ERROR_DOWNLOAD_BAD_ANSWER, "failed:Slave Response Failed...\n"); }

bool HoldsAcknowledgement(const uint8_t* answer, uint32_t count) {
  return std::find(answer, answer + count, kAcknowledged) != answer + count;
}

class YModemDownload {
 public:
  explicit YModemDownload(DownloadRun* run) : run_(run) {}

  Ending CountBlocks() {
    blocks_ = CountYModemBlocks(run_->file().size());
    return blocks_ == 0 ? Fail(VEXO_ERROR_DOWNLOAD_EMPTY, "failed:no packages...\n") : std::nullopt;
  }

  Ending EnterLoader(const char* descriptor) const {
    downloadTrace("Enter Upgrade mode...\n");
    run_->flushInput();
    const int32_t written = run_->printer().Write(kModeSwitch, sizeof(kModeSwitch));
    if (written != VEXO_OK) {
      return Fail(written, "write command failed...\n");
    }
    char loader[kUriBufferSize];
    NameLoader(descriptor, loader, sizeof(loader));
    run_->printer().Close();
    platform::SleepMs(kSwitchDelayMs);
    return ConnectTo(loader);
  }

  Ending ShakeHands() const {
    run_->flushInput();
    if (const Ending end = run_->CheckCancelled()) {
      return end;
    }
    downloadTrace("Shake hands before sending...\n");
    return Exchange(&kStartRequest, 1, kHandshakeDelayMs, kReady);
  }

  Ending SendHeader(const char* file_name) const {
    downloadTrace("Prepare to send packet headers...\n");
    const YModemShortBlock header = MakeYModemHeaderBlock(file_name, run_->file().size());
    if (const Ending end = Write(header.data(), header.size())) {
      return end;
    }
    uint8_t answer[kHeaderAnswerSize] = {};
    uint32_t received = 0;
    for (int32_t i = 0; i < kHeaderAnswerReads && received < kHeaderAnswerSize; ++i) {
      run_->readExact(answer, kHeaderAnswerSize, &received);
      if (received < kHeaderAnswerSize) {
        platform::SleepMs(kHeaderAnswerPauseMs);
      }
    }
    if (received < kHeaderAnswerSize) {
      return DataMissed();
    }
    return HoldsAcknowledgement(answer, kHeaderAnswerSize) ? std::nullopt : BadAnswer();
  }

  Ending SendFile() const {
    downloadTrace("Ready to send file...\n");
    Bytes content;
    if (const Ending end = run_->ReadFile(&content)) {
      return end;
    }
    run_->ReportProgress(0);
    YModemDataBlock block = {};
    for (uint32_t i = 0; i < blocks_; ++i) {
      if (const Ending end = run_->CheckCancelled()) {
        return end;
      }
      const size_t start = i * kYModemDataSize;
      FillYModemDataBlock(&block, i, content.data() + start, std::min(content.size() - start, kYModemDataSize));
      downloadTrace("package %d\n", static_cast<int>(i));
      if (const Ending end = SendBlock(block)) {
        return end;
      }
      run_->ReportProgress(i, blocks_);
    }
    return std::nullopt;
  }

  Ending FinishTransfer() const {
    downloadTrace("Sending file completed and Shake hands...\n");
    if (const Ending end = Exchange(&kEndOfFile, 1, kEndDelayMs, kAcknowledged)) {
      return end;
    }
    downloadTrace("A Empty packet at the end of sending...\n");
    const YModemShortBlock closing = MakeYModemClosingBlock();
    if (const Ending end = Exchange(closing.data(), closing.size(), kEndDelayMs, kAcknowledged)) {
      return end;
    }
    downloadTrace("End of Sending flag...\n");
    return Write(&kEndOfTransfer, 1);
  }

  void Restart() const {
    run_->ReportProgress(100);
    downloadTrace("restart printer...\n");
    run_->sendDoCommand(kResetPrinter);
    run_->printer().Close();
    run_->Complete();
  }

 private:
  static Ending DataMissed() { return Fail(VEXO_ERROR_DOWNLOAD_NO_ANSWER, "failed:Data Is Missed...\n"); }

  // "USB" means the current printer, identified by its serial number.
  void NameLoader(const char* descriptor, char* loader, size_t size) const {
    if (std::strcmp(descriptor, "USB") != 0) {
      CopyText(loader, size, descriptor);
      return;
    }
    char serial_number[kUriBufferSize] = {};
    GetPortUriParameter(run_->handle(), "sn", serial_number, sizeof(serial_number));
    BoundedText text(loader, size);
    text.Append("USB,");
    text.Append(serial_number);
  }

  Ending ConnectTo(const char* loader) const {
    int32_t result = VEXO_OK;
    for (int32_t i = 0; i < kConnectAttempts; ++i) {
      downloadTrace("desc = %s\n", loader);
      result = ReconnectHandle(run_->handle(), loader);
      if (result == VEXO_OK) {
        return std::nullopt;
      }
      platform::SleepMs(kConnectPauseMs);
      downloadTrace("retry to reconnect...\n");
    }
    const int32_t code = run_->printer().Check() == VEXO_ERROR_HANDLE ? VEXO_ERROR_HANDLE : VEXO_ERROR_DOWNLOAD_MODE;
    return Fail(code, "failed:Enter Mode Failed...\n");
  }

  Ending Write(const uint8_t* bytes, size_t length) const {
    return run_->printer().Write(bytes, length) == VEXO_OK ? std::nullopt
                                                           : Fail(VEXO_ERROR_IO_WRITE, "failed:WriteData Failed...\n");
  }

  // Sends bytes that the printer answers with a single byte.
  Ending Exchange(const uint8_t* bytes, size_t length, uint32_t delay_ms, uint8_t expected) const {
    if (const Ending end = Write(bytes, length)) {
      return end;
    }
    platform::SleepMs(delay_ms);
    uint8_t answer = 0;
    uint32_t received = 0;
    run_->readExact(&answer, 1, &received);
    if (received == 0) {
      return DataMissed();
    }
    return answer == expected ? std::nullopt : BadAnswer();
  }

  // Compatibility: a block is never sent again; this variant has no retransmission.
  Ending SendBlock(const YModemDataBlock& block) const {
    if (const Ending end = Write(block.data(), block.size())) {
      return end;
    }
    platform::SleepMs(kBlockDelayMs);
    uint8_t answer[kBlockAnswerSize] = {};
    uint32_t received = 0;
    ReadReply(run_->handle(), answer, 0, kBlockAnswerSize, &received, kBlockAnswerTries, 0);
    return HoldsAcknowledgement(answer, received) ? std::nullopt : BadAnswer();
  }

  DownloadRun* const run_;
  uint32_t blocks_ = 0;
};

}  // namespace

int32_t DownloadYModem(VexoPrinterHandle* handle, const char* file_name, const char* descriptor,
                       DownloadProgressCallback progress) {
  DownloadRun run(handle, progress);
  if (const Ending end = run.CheckHandle()) {
    return *end;
  }
  if (const Ending end = run.OpenFile(file_name, "failed:file is null.")) {
    return *end;
  }
  YModemDownload download(&run);
  if (const Ending end = download.CountBlocks()) {
    return *end;
  }
  if (descriptor != nullptr) {
    if (const Ending end = download.EnterLoader(descriptor)) {
      return *end;
    }
  }
  if (const Ending end = download.ShakeHands()) {
    return *end;
  }
  if (const Ending end = download.SendHeader(file_name)) {
    return *end;
  }
  if (const Ending end = download.SendFile()) {
    return *end;
  }
  if (const Ending end = download.FinishTransfer()) {
    return *end;
  }
  download.Restart();
  return VEXO_OK;
}

}  // namespace vexo
