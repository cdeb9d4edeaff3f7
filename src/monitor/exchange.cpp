// Sends commands and waits for their answers.
#include <mutex>

#include "monitor/printer_read_helper.h"
#include "protocol/checked_printer.h"
#include "vexo/error.h"

namespace {

constexpr int kSendAttempts = 2;
constexpr int kAnswerAttempts = 2;
constexpr int kQueryAttempts = 2;
constexpr int64_t kQueryPollMs = 200;

}  // namespace

int32_t CVEXOPrinterReadHelper::Send(const vexo::Bytes& command) {
  // Kept in a local: a poll on the other thread may overwrite lastResult at any time.
  int32_t result = lastResult;
  try {
    for (int attempt = 0; attempt < kSendAttempts; ++attempt) {
      result = vexo::CheckedPrinter(printer).Write(command);
      lastResult = result;
      if (result != VEXO_ERROR_IO_WRITE_TIMEOUT) {
        break;
      }
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): a host's port object may throw; the last result stands.
  }
  return result;
}

int32_t CVEXOPrinterReadHelper::SendForAnswer(const vexo::Bytes& command) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  Poll(0);
  replyQueue.Purge();
  return Send(command);
}

int32_t CVEXOPrinterReadHelper::AwaitAnswer(const vexo::Bytes& command) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  const int32_t sent = SendForAnswer(command);
  if (sent != VEXO_OK) {
    return sent;
  }
  Poll(readTimeout);
  for (int attempt = 0; attempt < kAnswerAttempts; ++attempt) {
    if (replyQueue.TakeAnswer().kind != vexo::RecordKind::kEmpty) {
      return VEXO_OK;
    }
    Poll(readTimeout);
  }
  return VEXO_ERROR_MONITOR_NO_ANSWER;
}

// The reader thread may run between the attempts.
vexo::ReportRecord CVEXOPrinterReadHelper::AwaitQueryAnswer() {
  for (int attempt = 0; attempt < kQueryAttempts; ++attempt) {
    vexo::ReportRecord answer = TakeReply();
    if (answer.kind != vexo::RecordKind::kEmpty) {
      return answer;
    }
    Poll(kQueryPollMs);
  }
  return {};
}

vexo::ReportRecord CVEXOPrinterReadHelper::TakeReply() {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  return replyQueue.TakeAnswer();
}

size_t CVEXOPrinterReadHelper::CountWaiting() {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  return replyQueue.size();
}
