// From what the printer sends to the host's callbacks and the queue.
#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

#include "monitor/printer_read_helper.h"
#include "protocol/reply_reader.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace {

constexpr int64_t kReceiveStepMs = 20;
constexpr uint32_t kPollSize = 2048;
constexpr uint32_t kJobEndReplySize = 1024;

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
  const bool called = callbacks.Deliver(
      [=](MonitorCallback callback, void* /*context*/) { callback(event, record->task_id, record->value); });
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
