// Queue of decoded reports and replies, oldest first.
#ifndef VEXO_MONITOR_REPLY_QUEUE_H_
#define VEXO_MONITOR_REPLY_QUEUE_H_

#include <cstddef>
#include <deque>

#include "monitor/report_record.h"

namespace vexo {

// Not synchronised: the monitor's ioLock guards it. A record of kind kEmpty means "none".
class ReplyQueue {
 public:
  // Replies that no exchange takes are limited to the newest of this number. Events are never dropped.
  static constexpr size_t kMostReplies = 1024;

  // Throws std::bad_alloc, leaving queue and record unchanged.
  void Add(ReportRecord&& record);
  void Clear();
  size_t size() const { return events_.size() + replies_.size(); }

  // Drops the replies and keeps the job events. An exchange calls this before it sends, so that it cannot take an old
  // answer.
  void Purge() { replies_.clear(); }

  // Takes the answer that an exchange waits for: the first reply.
  ReportRecord TakeAnswer();

  // Takes the first job event.
  //
  // Compatibility: drops all replies, so an exchange on another thread may lose the answer it waits for. Hosts know
  // this order.
  ReportRecord TakeEvent();

 private:
  std::deque<ReportRecord> events_;
  std::deque<ReportRecord> replies_;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_REPLY_QUEUE_H_
