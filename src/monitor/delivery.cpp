// Receives what the printer sends, decodes it and delivers it to callbacks or the queue.
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

// A callback that queries the printer may receive the next event while it does so, on the host's stack. Events decoded
// at this depth wait until the outermost callback has returned.
constexpr int kDeepestDelivery = 8;

bool IsJobStart(const vexo::ReportRecord& record) {
  return record.type == vexo::kReportJobStarted || record.type == vexo::kReplyJobStarted;
}

// One attempt for each full step of the timeout.
int32_t ReceiveTries(int64_t timeout_ms) {
  const int64_t tries = timeout_ms / kReceiveStepMs;
  return static_cast<int32_t>(std::clamp<int64_t>(tries, 0, std::numeric_limits<int32_t>::max()));
}

}  // namespace

void CVEXOPrinterReadHelper::Poll(int64_t timeout_ms) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  rxBuffer.Reserve(kPollSize);  // Bytes already read must not be lost when memory runs out.
  uint8_t bytes[kPollSize];
  uint32_t count = 0;
  lastResult = vexo::ReadStream(printer, bytes, kPollSize, &count, ReceiveTries(timeout_ms), kReceiveStepMs);
  if (count > 0) {
    rxBuffer.Append(bytes, count);
  }
  Decode();
}

// A frame is consumed before it is delivered, so an export called from a callback never sees it again. Such an export
// may also receive and decode, so nothing but the buffer carries state from one step to the next. A monitor that is
// being destroyed delivers nothing more.
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
      rxBuffer.PutBack(step.consumed);  // The queue cannot grow and no callback was called: decoded again later.
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
    // The reply carries neither the task number nor the status.
    record.task_id = currentTaskId;
    record.value = FetchJobEndValue();
  }
  DeliverInTurn(std::move(record));
}

// Events must stay in order: while one is postponed, later ones are postponed, too.
void CVEXOPrinterReadHelper::DeliverInTurn(vexo::ReportRecord record) {
  if (deliveries_ + 1 >= kDeepestDelivery || !postponed_.empty()) {
    postponed_.push_back(std::move(record));
  } else {
    Deliver(&record);
  }
}

// Runs once the outermost delivery is done. Events that a callback receives meanwhile are queued behind those already
// postponed.
void CVEXOPrinterReadHelper::DeliverPostponed() {
  while (deliveries_ == 0 && !postponed_.empty() && !stop_requested()) {
    std::list<vexo::ReportRecord> next;
    next.splice(next.begin(), postponed_, postponed_.begin());
    try {
      Deliver(&next.front());
    } catch (const std::bad_alloc&) {
      postponed_.splice(postponed_.begin(), next);  // The queue cannot grow: delivered again later.
      throw;
    }
  }
}

// Callbacks do not throw here (CallbackRegistry). When the queue cannot grow, *record is unchanged.
void CVEXOPrinterReadHelper::Deliver(vexo::ReportRecord* record) {
  const int32_t event = IsJobStart(*record) ? VEXO_JOB_STARTED : VEXO_JOB_ENDED;
  ++deliveries_;
  const bool called = callbacks.Deliver(
      [=](MonitorCallback callback, void* /*context*/) { callback(event, record->task_id, record->value); });
  --deliveries_;
  if (!called) {
    replyQueue.Add(std::move(*record));
  }
}

// Compatibility: the value is the first four bytes of the answer as they arrive, not the contents of the report frame,
// and the rest is dropped; hosts compare it with the values they have always received. Whatever fails, the job has
// ended, so the event is delivered with value 0.
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
