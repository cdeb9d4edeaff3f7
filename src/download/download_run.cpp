#include "download/download_run.h"

#include <algorithm>
#include <atomic>
#include <cmath>

#include "download/trace.h"
#include "platform/clock.h"
#include "protocol/reply_reader.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kFlushSize = 512;
constexpr uint32_t kStagingSize = 4096;
constexpr int32_t kReadChances = 6;
constexpr uint32_t kReadPauseMs = 200;

// Not locked: a late view only delays the point at which the download stops.
std::atomic<uint8_t> g_cancelled{0};

// Never read. Shared, because downloads run one at a time.
uint8_t g_flushed[kFlushSize];
uint32_t g_flushed_count;

}  // namespace

void CancelDownload() { g_cancelled.store(1, std::memory_order_relaxed); }

Ending Fail(int32_t code, const char* trace) {
  downloadTrace("%s", trace);
  return code;
}

uint32_t CountPieces(int32_t size, int32_t piece) {
  return static_cast<uint32_t>(std::ceil(static_cast<double>(size) / static_cast<double>(piece)));
}

DownloadRun::DownloadRun(VexoPrinterHandle* handle, DownloadProgressCallback progress)
    : handle_(handle), progress_(progress), printer_(handle) {
  g_cancelled.store(0, std::memory_order_relaxed);
}

Ending DownloadRun::CheckHandle() const {
  const int32_t check = printer_.Check();
  return check == VEXO_OK ? std::nullopt : Fail(check, "error handle.");
}

Ending DownloadRun::OpenFile(const char* name, const char* empty_file_trace) {
  if (!file_.Open(name)) {
    return Fail(VEXO_ERROR_PARAMETER, "error parameters.");
  }
  downloadTrace("filename =%s\n", name);
  if (file_.size() == 0) {
    return Fail(VEXO_ERROR_DOWNLOAD_EMPTY, empty_file_trace);
  }
  downloadTrace("totalFileSize =%d\n", file_.size());
  return std::nullopt;
}

Ending DownloadRun::ReadFile(Bytes* content) {
  content->resize(static_cast<size_t>(file_.size()));
  if (file_.Read(content->data(), content->size()) != content->size()) {
    return Fail(VEXO_ERROR_PARAMETER, kReadFileFailedTrace);
  }
  return std::nullopt;
}

bool DownloadRun::IsCancelled() const { return g_cancelled.load(std::memory_order_relaxed) != 0; }

Ending DownloadRun::CheckCancelled() const {
  return IsCancelled() ? Fail(VEXO_ERROR_DOWNLOAD_CANCELLED, "Cancel...\n") : std::nullopt;
}

void DownloadRun::ReportProgress(int32_t percentage) const {
  if (progress_ != nullptr) {
    progress_(percentage);
  }
}

void DownloadRun::ReportProgress(uint32_t done, uint32_t total) const {
  ReportProgress(static_cast<int32_t>(static_cast<double>(done) / static_cast<double>(total) * 100.0));
}

void DownloadRun::flushInput() const { ReadReply(handle_, g_flushed, 0, kFlushSize, &g_flushed_count, 0, 0); }

int32_t DownloadRun::readExact(uint8_t* buffer, uint32_t wanted, uint32_t* received) const {
  uint32_t unwanted_count = 0;
  uint32_t& count = received != nullptr ? *received : unwanted_count;
  count = 0;
  if (handle_ == nullptr || buffer == nullptr) {
    return VEXO_ERROR_HANDLE;
  }
  uint8_t staging[kStagingSize] = {};
  uint32_t total = 0;
  uint32_t last = 0;
  for (int32_t chances = kReadChances; total < wanted;) {
    last = 0;
    const int32_t result = printer_.Read(staging + total, wanted - total, &last);
    if (result != VEXO_OK && result != VEXO_ERROR_IO_READ_TIMEOUT) {
      return result;
    }
    total += last;
    if (last > 0) {
      continue;
    }
    if (--chances == 0) {
      return result;
    }
    platform::SleepMs(kReadPauseMs);
  }
  // Compatibility: the count is that of the last read only; see the declaration.
  std::copy_n(staging, std::min(last, wanted), buffer);
  count = last;
  return VEXO_OK;
}

Ending DownloadRun::Restart() const {
  const int32_t written = printer_.Write(BuildDoCommand(kResetPrinter));
  if (written != VEXO_OK) {
    return Fail(written, "Reboot device failed...\n");
  }
  downloadTrace("Successfully restarted the device...\n");
  flushInput();
  return std::nullopt;
}

void DownloadRun::Complete() {
  file_.Close();
  downloadTrace("Completed...\n");
}

bool DownloadRun::sendDoCommand(std::string_view action) const {
  return printer_.Write(BuildDoCommand(action)) != VEXO_OK;
}

}  // namespace vexo
