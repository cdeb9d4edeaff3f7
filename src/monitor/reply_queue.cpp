#include "monitor/reply_queue.h"

#include <algorithm>
#include <utility>

namespace vexo {
namespace {

bool IsReply(const ReportRecord& record) {
  return record.kind == RecordKind::kIntermediate || record.kind == RecordKind::kReply;
}

}  // namespace

void ReplyQueue::Purge() { records_.erase(std::remove_if(records_.begin(), records_.end(), IsReply), records_.end()); }

ReportRecord ReplyQueue::TakeReply() {
  const auto found = std::find_if(records_.begin(), records_.end(), IsReply);
  if (found == records_.end()) {
    return {};
  }
  ReportRecord record = std::move(*found);
  records_.erase(found);
  return record;
}

ReportRecord ReplyQueue::TakeAnswer() {
  ReportRecord record = TakeReply();
  while (record.kind == RecordKind::kIntermediate) {
    record = TakeReply();
  }
  return record;
}

ReportRecord ReplyQueue::TakeEvent() {
  Purge();
  if (records_.empty()) {
    return {};
  }
  ReportRecord record = std::move(records_.front());
  records_.pop_front();
  return record;
}

}  // namespace vexo
