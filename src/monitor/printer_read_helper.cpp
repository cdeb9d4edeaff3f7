#include "monitor/printer_read_helper.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "platform/clock.h"
#include "protocol/printer_connection.h"
#include "protocol/reply_reader.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace {

constexpr int kSendAttempts = 2;
constexpr int64_t kReceiveStepMs = 20;
constexpr uint32_t kPollSize = 2048;
constexpr uint32_t kJobEndReplySize = 1024;

// The reader looks for a stop request at least this often, however long the host makes its pauses.
constexpr uint32_t kLongestSleepMs = 100;

// A callback that asks the printer may be told of the next event while it does, and its stack is the host's: events
// that are decoded at this depth wait until the first of the callbacks has returned.
constexpr int kDeepestDelivery = 8;

constexpr int32_t kEventJobStarted = 1;
constexpr int32_t kEventJobEnded = 2;

bool IsJobStart(const vexo::ReportRecord& record) {
  return record.type == vexo::kReportJobStarted || record.type == vexo::kReplyJobStarted;
}

// One attempt for each full step of the time.
int32_t ReceiveTries(int64_t timeout_ms) {
  const int64_t tries = timeout_ms / kReceiveStepMs;
  return static_cast<int32_t>(std::clamp<int64_t>(tries, 0, std::numeric_limits<int32_t>::max()));
}

}  // namespace

bool CVEXOPrinterReadHelper::StartReader() {
  return readerThread.Start([](void* monitor) { static_cast<CVEXOPrinterReadHelper*>(monitor)->ReaderLoop(); }, this);
}

void CVEXOPrinterReadHelper::StopReader() {
  callbacks.RemoveAll();
  flags_ = Flags{/*stopRequested=*/true, /*workOpen=*/false};
  if (readerThread.IsCurrent()) {
    vexo::platform::ThrowDeadlock();
  }
  readerThread.Join();
}

// Nothing may escape from here: it would end the host.
void CVEXOPrinterReadHelper::ReaderLoop() {
  while (!stop_requested()) {
    try {
      PollWhileWorkIsOpen();
    } catch (...) {  // NOLINT(bugprone-empty-catch): out of memory, or a host's own port; the next pass tries again.
    }
    PauseReader();
  }
}

// Looked at again under the lock: a close that came in between has forgotten all jobs, and nothing of them may follow.
void CVEXOPrinterReadHelper::PollWhileWorkIsOpen() {
  if (!work_open()) {
    return;
  }
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  if (work_open()) {
    Poll(0);
  }
}

void CVEXOPrinterReadHelper::PauseReader() const {
  auto left = static_cast<uint32_t>(pollingTime.load());
  do {
    const uint32_t step = std::min(left, kLongestSleepMs);
    vexo::platform::RestMs(step);
    left -= step;
  } while (left > 0 && !stop_requested());
}

int32_t CVEXOPrinterReadHelper::BindPrinter(VexoPrinterHandle* handle) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  const int32_t result = vexo::PrinterConnection(handle).Check();
  lastResult = result;
  printer = result == VEXO_OK ? handle : nullptr;
  return result;
}

void CVEXOPrinterReadHelper::SetWorkOpen(bool open) {
  Flags flags = flags_;
  while (!flags_.compare_exchange_weak(flags, Flags{flags.stopRequested, open && !flags.stopRequested})) {
  }
}

int32_t CVEXOPrinterReadHelper::Send(const vexo::Bytes& command) {
  // The result is kept apart from the shared one, which a poll on the other thread may overwrite at any moment.
  int32_t result = lastResult;
  try {
    for (int attempt = 0; attempt < kSendAttempts; ++attempt) {
      result = vexo::PrinterConnection(printer).Write(command);
      lastResult = result;
      if (result != VEXO_ERROR_IO_WRITE_TIMEOUT) {
        break;
      }
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): a host's own port object may throw; the last result stands.
  }
  return result;
}

void CVEXOPrinterReadHelper::Poll(int64_t timeout_ms) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  rxBuffer.Reserve(kPollSize);  // What has been read must not be lost for want of memory.
  uint8_t bytes[kPollSize];
  uint32_t count = 0;
  lastResult = vexo::ReadStream(printer, bytes, kPollSize, &count, ReceiveTries(timeout_ms), kReceiveStepMs);
  if (count > 0) {
    rxBuffer.Append(bytes, count);
  }
  Decode();
}

// A frame is consumed before anything comes of it, so an export that is called inside a callback never sees it again.
// Nothing is remembered across steps but the buffer itself, for such an export may receive and decode, too. A monitor
// that is being destroyed has nobody left to tell.
void CVEXOPrinterReadHelper::Decode() {
  while (!stop_requested()) {
    DeliverPostponed();
    vexo::DecodeStep step = vexo::DecodeNextReport(rxBuffer.data(), rxBuffer.size(), sdkType);
    rxBuffer.Consume(step.consumed);
    if (step.record.kind == vexo::RecordKind::kEmpty) {
      return;
    }
    if (step.tracking_reset) {
      currentTaskId = 0;
    }
    try {
      Accept(std::move(step.record));
    } catch (const std::bad_alloc&) {
      rxBuffer.PutBack(step.consumed);  // No room in the queue, and nobody was called: the next pass finds it again.
      throw;
    }
  }
}

void CVEXOPrinterReadHelper::Accept(vexo::ReportRecord record) {
  if (record.kind != vexo::RecordKind::kJobEvent) {
    replyQueue.Add(std::move(record));
    return;
  }
  if (IsJobStart(record)) {
    currentTaskId = record.task_id;
  } else if (record.type == vexo::kReplyJobEnded) {
    // This reply says neither which job nor how it went.
    record.task_id = currentTaskId;
    record.value = FetchJobEndValue();
  }
  DeliverInTurn(std::move(record));
}

// Whatever comes behind an event that waits has to wait, too.
void CVEXOPrinterReadHelper::DeliverInTurn(vexo::ReportRecord record) {
  if (deliveries_ + 1 >= kDeepestDelivery || !postponed_.empty()) {
    postponed_.push_back(std::move(record));
  } else {
    Deliver(&record);
  }
}

// What the outermost delivery does when it is over. Events that a callback receives meanwhile are put behind those that
// wait already.
void CVEXOPrinterReadHelper::DeliverPostponed() {
  while (deliveries_ == 0 && !postponed_.empty() && !stop_requested()) {
    std::list<vexo::ReportRecord> next;
    next.splice(next.begin(), postponed_, postponed_.begin());
    try {
      Deliver(&next.front());
    } catch (const std::bad_alloc&) {
      postponed_.splice(postponed_.begin(), next);  // No room in the queue: the next pass tries again.
      throw;
    }
  }
}

// Callbacks do not throw. When the queue has no room for the record, it is as it was.
void CVEXOPrinterReadHelper::Deliver(vexo::ReportRecord* record) {
  const int32_t event = IsJobStart(*record) ? kEventJobStarted : kEventJobEnded;
  ++deliveries_;
  const bool called = callbacks.Deliver(event, record->task_id, record->value);
  --deliveries_;
  if (!called) {
    replyQueue.Add(std::move(*record));
  }
}

// The value is the first four bytes of the answer just as they come, not the contents of a report frame, and the rest
// is dropped: hosts compare it with what they have always seen. Whatever goes wrong, the job has ended: the event is
// due, with 0.
uint32_t CVEXOPrinterReadHelper::FetchJobEndValue() {
  uint8_t reply[kJobEndReplySize] = {};
  try {
    if (Send(vexo::BuildGetValCommand("reprint_status")) != VEXO_OK) {
      return 0;
    }
    uint32_t count = 0;
    lastResult =
        vexo::ReadReply(printer, reply, 0, kJobEndReplySize, &count, ReceiveTries(readTimeout), kReceiveStepMs);
  } catch (...) {
    return 0;
  }
  return vexo::ReadLittleEndian32(reply);
}

void CVEXOPrinterReadHelper::ForgetJobs() {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  rxBuffer.Clear();
  replyQueue.Clear();
  postponed_.clear();
  requestedTaskId = 1;
  currentTaskId = 0;
}
