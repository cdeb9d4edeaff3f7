// The monitor object: a printer handle, the reader thread that listens to it, and what was heard.
#ifndef VEXO_MONITOR_PRINTER_READ_HELPER_H_
#define VEXO_MONITOR_PRINTER_READ_HELPER_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>

#include "monitor/receive_buffer.h"
#include "monitor/reply_queue.h"
#include "monitor/report_decoder.h"
#include "monitor/status_report.h"
#include "platform/callback_registry.h"
#include "platform/mutex.h"
#include "platform/thread.h"
#include "protocol/bytes.h"
#include "vexo/extend.h"

// What GetReprintMonitorObj hands out. Two threads meet in it: the host's, inside an export, and the reader thread.
//
// Locks: the I/O lock guards the receive buffer, the queue, every poll and every exchange that waits for a reply; the
// callback lock guards the callbacks. Whoever takes both takes the I/O lock first: callbacks run inside a poll. Both
// are recursive, because exchanges poll and callbacks call exports. Settings are single values, read as they are.
struct CVEXOPrinterReadHelper {
 public:
  CVEXOPrinterReadHelper() = default;
  CVEXOPrinterReadHelper(const CVEXOPrinterReadHelper&) = delete;
  CVEXOPrinterReadHelper& operator=(const CVEXOPrinterReadHelper&) = delete;

  // False: the system has no thread to give.
  bool StartReader();

  // Removes the callbacks, then ends the reader thread and waits for that: for the rest of its pause, at most 100 ms,
  // and for the poll under way. Throws std::system_error (resource deadlock would occur) on the reader thread itself,
  // which cannot wait for its own end; it ends all the same.
  void StopReader();

  // -6, -309 when the handle is bad or closed; the object then has no printer.
  int32_t BindPrinter(VexoPrinterHandle* handle);

  void SetReadTimeout(int64_t milliseconds) { readTimeout = milliseconds; }
  void SetDelayTime(int64_t milliseconds) { delayTime = milliseconds; }
  void SetPollingTime(int64_t milliseconds) { pollingTime = milliseconds; }
  void SelectFamily(vexo::ProtocolFamily family) { sdkType = family; }

  // As the exports of the monitor's work (extend.h), with the arguments checked and without the last-error rule:
  // OpenReprintMonitorWork, CloseReprintMonitorWork, QueryReprintMonitorWork, GetStatusReport. In monitor_work.cpp.
  int32_t OpenWork();
  int32_t CloseWork();
  int32_t QueryWork(char* buffer, int32_t buffer_length);
  vexo::StatusReport TakeStatusReport();
  bool work_open() const { return flags_.load().workOpen; }

  // As SetPrintTaskId, SetClearPrintTask, GetDeviceStatus, SetPaperFeed and ResetPrinterInteriorId, in the same way;
  // the work is open where that is required. In task_control.cpp.
  int32_t TagNextJob(int32_t task_id);
  int32_t ClearTasks();
  int32_t QueryDeviceStatus(uint32_t* status);
  int32_t FeedPaper();
  int32_t ResetTaskNumbers(bool await_answer);

  // Gives the callback's number. Throws std::bad_alloc.
  int64_t AddCallback(MonitorCallback callback) { return callbacks.Add(callback); }
  void RemoveCallback(int64_t id) { callbacks.Remove(id); }

  // Collects what the printer sends, for up to `timeout_ms` in steps of 20 ms (0: what is there), and decodes it.
  void Poll(int64_t timeout_ms);

  // The first reply that waits to be taken, and how many events and replies wait.
  vexo::ReportRecord TakeReply();
  size_t CountWaiting();

 private:
  // Written together, in one store: a reader that sees the stop must not see the work still open.
  struct alignas(2) Flags {
    bool stopRequested = false;
    bool workOpen = false;
  };

  // What exchanges are made of, in exchange.cpp. Send writes a command, once more after a write that timed out, without
  // a lock and without waiting for a reply. SendForAnswer makes sure that an answer taken from now on belongs to this
  // command: what has come is decoded, and old replies are dropped. AwaitAnswer also waits for the answer, without
  // letting the reader thread in between: 0; -7003 for none; else the result of the send.
  int32_t Send(const vexo::Bytes& command);
  int32_t SendForAnswer(const vexo::Bytes& command);
  int32_t AwaitAnswer(const vexo::Bytes& command);
  vexo::ReportRecord AwaitQueryAnswer();

  void SetWorkOpen(bool open);
  void ForgetJobs();

  // The reader thread.
  bool stop_requested() const { return flags_.load().stopRequested; }
  void ReaderLoop();
  void PollWhileWorkIsOpen();
  void PauseReader() const;

  // From bytes to callbacks.
  void Decode();
  void Accept(vexo::ReportRecord record);
  void DeliverInTurn(vexo::ReportRecord record);
  void DeliverPostponed();
  void Deliver(vexo::ReportRecord* record);
  uint32_t FetchJobEndValue();

  // The names of these fields are known beyond this library; hence their spelling.
  // NOLINTBEGIN(readability-identifier-naming)
  std::atomic<int32_t> lastResult{0};  // Of the last send, read or binding.
  std::atomic<VexoPrinterHandle*> printer{nullptr};
  std::atomic<int64_t> readTimeout{1000};
  std::atomic<int64_t> delayTime{100};  // Kept for hosts that set it; nothing waits for it.
  std::atomic<int64_t> pollingTime{100};
  vexo::ReceiveBuffer rxBuffer;
  vexo::ReplyQueue replyQueue;
  vexo::platform::RecursiveMutex ioLock;
  vexo::platform::Thread readerThread;
  std::atomic<Flags> flags_{Flags{}};
  std::atomic<int32_t> requestedTaskId{1};
  int32_t currentTaskId = 0;  // Of the job that the printer last reported as started.
  std::atomic<vexo::ProtocolFamily> sdkType{vexo::ProtocolFamily::kV1};
  vexo::platform::CallbackRegistry<MonitorCallback> callbacks{&callbackLock};
  vexo::platform::RecursiveMutex callbackLock;
  // NOLINTEND(readability-identifier-naming)

  std::list<vexo::ReportRecord> postponed_;  // Job events that wait for the outermost delivery, in their order.
  int deliveries_ = 0;                       // Under way now, one inside the other.
};

#endif  // VEXO_MONITOR_PRINTER_READ_HELPER_H_
