#include "monitor/reply_queue.h"

#include <utility>

namespace vexo {
namespace {

ReportRecord TakeFirst(std::deque<ReportRecord>* records) {
  if (records->empty()) {
    return {};
  }
  ReportRecord record = std::move(records->front());
  records->pop_front();
  return record;
}

}  // namespace

void ReplyQueue::Add(ReportRecord&& record) {
  if (record.kind == RecordKind::kJobEvent) {
    events_.push_back(std::move(record));
    return;
  }
  replies_.push_back(std::move(record));
  if (replies_.size() > kMostReplies) {
    replies_.pop_front();
  }
}

void ReplyQueue::Clear() {
  events_.clear();
  replies_.clear();
}

ReportRecord ReplyQueue::TakeAnswer() {
  ReportRecord record = TakeFirst(&replies_);
  while (record.kind == RecordKind::kIntermediate) {
    record = TakeFirst(&replies_);
  }
  return record;
}

ReportRecord ReplyQueue::TakeEvent() {
  Purge();
  return TakeFirst(&events_);
}

}  // namespace vexo
