// Decoded reports and replies that wait to be taken, oldest first.
#ifndef VEXO_MONITOR_REPLY_QUEUE_H_
#define VEXO_MONITOR_REPLY_QUEUE_H_

#include <cstddef>
#include <deque>

#include "monitor/report_record.h"

namespace vexo {

// Not locked: the monitor's I/O lock guards it. A record of kind kEmpty stands for "none".
class ReplyQueue {
 public:
  // Of replies that nobody takes, from a printer that talks without being asked, only so many newest are kept. Events
  // are never dropped.
  static constexpr size_t kMostReplies = 1024;

  // Throws std::bad_alloc; queue and record are as they were then.
  void Add(ReportRecord&& record);
  void Clear();
  size_t size() const { return events_.size() + replies_.size(); }

  // Drops the replies; job events stay. An exchange does so before it asks, so that it cannot take an old answer.
  void Purge() { replies_.clear(); }

  // The answer that an exchange waits for: the first reply.
  ReportRecord TakeAnswer();

  // The first job event. Replies are dropped: an answer that some exchange still waits for is lost by this, which hosts
  // know as the order of things.
  ReportRecord TakeEvent();

 private:
  std::deque<ReportRecord> events_;
  std::deque<ReportRecord> replies_;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_REPLY_QUEUE_H_
