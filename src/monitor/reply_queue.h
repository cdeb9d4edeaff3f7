// Decoded reports and replies that wait to be taken, oldest first.
#ifndef VEXO_MONITOR_REPLY_QUEUE_H_
#define VEXO_MONITOR_REPLY_QUEUE_H_

#include <cstddef>
#include <deque>
#include <utility>

#include "monitor/report_record.h"

namespace vexo {

// Not locked: the monitor's I/O lock guards it. A record of kind kEmpty stands for "none".
class ReplyQueue {
 public:
  void Add(ReportRecord record) { records_.push_back(std::move(record)); }
  void Clear() { records_.clear(); }
  size_t size() const { return records_.size(); }

  // Drops the replies; job events stay. An exchange does so before it asks, so that it cannot take an old answer.
  void Purge();

  // The answer that an exchange waits for: the first reply.
  ReportRecord TakeAnswer();

  // The first job event. Replies are dropped: an answer that some exchange still waits for is lost by this, which hosts
  // know as the order of things.
  ReportRecord TakeEvent();

 private:
  ReportRecord TakeReply();

  std::deque<ReportRecord> records_;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_REPLY_QUEUE_H_
