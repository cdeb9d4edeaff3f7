// The monitor object: a printer handle, the reader thread that polls it, and the reports received.
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

// What GetReprintMonitorObj returns. Two threads use it: the host's, inside an export, and the reader thread.
//
// Locks: ioLock guards the receive buffer, the queue, every poll and every exchange that waits for a reply;
// callbackLock guards the callbacks. A thread that takes both takes ioLock first, because callbacks run inside a poll.
// Both are recursive, because exchanges poll and callbacks call exports. Settings are single atomic values.
struct CVEXOPrinterReadHelper {
 public:
  CVEXOPrinterReadHelper() = default;
  CVEXOPrinterReadHelper(const CVEXOPrinterReadHelper&) = delete;
  CVEXOPrinterReadHelper& operator=(const CVEXOPrinterReadHelper&) = delete;

  // Returns false when no thread can be started.
  bool StartReader();

  // Removes the callbacks, then stops the reader thread and waits for it: for the poll under way and the rest of its
  // pause, at most 100 ms. On the reader thread itself, which cannot join itself, throws std::system_error (resource
  // deadlock would occur); the thread ends nevertheless.
  void StopReader();

  // Returns VEXO_ERROR_HANDLE or VEXO_ERROR_IO_NOT_OPEN for a bad or closed handle; the object then has no printer.
  int32_t BindPrinter(VexoPrinterHandle* handle);

  void SetReadTimeout(int64_t milliseconds) { readTimeout = milliseconds; }
  void SetDelayTime(int64_t milliseconds) { delayTime = milliseconds; }
  void SetPollingTime(int64_t milliseconds) { pollingTime = milliseconds; }
  void SelectFamily(vexo::ProtocolFamily family) { sdkType = family; }

  // Implement OpenReprintMonitorWork, CloseReprintMonitorWork, QueryReprintMonitorWork and GetStatusReport (extend.h),
  // with checked arguments and without the last-error rule. In monitor_work.cpp.
  int32_t OpenWork();
  int32_t CloseWork();
  int32_t QueryWork(char* buffer, int32_t buffer_length);
  vexo::StatusReport TakeStatusReport();
  bool work_open() const { return flags_.load().workOpen; }

  // Implement SetPrintTaskId, SetClearPrintTask, GetDeviceStatus, SetPaperFeed and ResetPrinterInteriorId in the same
  // way; the work is open where that is required. In task_control.cpp.
  int32_t TagNextJob(int32_t task_id);
  int32_t ClearTasks();
  int32_t QueryDeviceStatus(uint32_t* status);
  int32_t FeedPaper();
  int32_t ResetTaskNumbers(bool await_answer);

  // Returns the callback's id. Throws std::bad_alloc.
  int64_t AddCallback(MonitorCallback callback) { return callbacks.Add(callback); }
  void RemoveCallback(int64_t id) { callbacks.Remove(id); }

  // Receives what the printer sends, for up to `timeout_ms` in steps of 20 ms (0: a single read), and decodes it.
  void Poll(int64_t timeout_ms);

  // Takes the first queued reply; counts the queued events and replies.
  vexo::ReportRecord TakeReply();
  size_t CountWaiting();

 private:
  // Written in a single store: a reader that sees the stop request must not see the work still open.
  struct alignas(2) Flags {
    bool stopRequested = false;
    bool workOpen = false;
  };

  // Steps of an exchange, in exchange.cpp. Send writes a command, without a lock and without waiting for a reply, and
  // repeats it once after VEXO_ERROR_IO_WRITE_TIMEOUT. SendForAnswer first decodes what has arrived and drops old
  // replies, so that the next answer taken belongs to this command. AwaitAnswer also waits for the answer, keeping the
  // reader thread out: VEXO_OK, VEXO_ERROR_MONITOR_NO_ANSWER, or the result of Send.
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

  // From received bytes to callbacks, in delivery.cpp.
  void Decode();
  void Accept(vexo::ReportRecord record);
  void DeliverInTurn(vexo::ReportRecord record);
  void DeliverPostponed();
  void Deliver(vexo::ReportRecord* record);
  uint32_t FetchJobEndValue();

  // Compatibility: hosts and tools know these fields by name; hence their spelling.
  // NOLINTBEGIN(readability-identifier-naming)
  std::atomic<int32_t> lastResult{0};  // Of the latest send, read or binding.
  std::atomic<VexoPrinterHandle*> printer{nullptr};
  std::atomic<int64_t> readTimeout{1000};
  std::atomic<int64_t> delayTime{100};  // Compatibility: hosts set it, but nothing uses it.
  std::atomic<int64_t> pollingTime{100};
  vexo::ReceiveBuffer rxBuffer;
  vexo::ReplyQueue replyQueue;
  vexo::platform::RecursiveMutex ioLock;
  vexo::platform::Thread readerThread;
  std::atomic<Flags> flags_{Flags{}};
  std::atomic<int32_t> requestedTaskId{1};
  int32_t currentTaskId = 0;  // Of the job that the printer last reported as started.
  std::atomic<vexo::ProtocolFamily> sdkType{vexo::ProtocolFamily::kV1};
  vexo::platform::RecursiveMutex callbackLock;
  vexo::platform::CallbackRegistry<MonitorCallback> callbacks{&callbackLock};
  // NOLINTEND(readability-identifier-naming)

  std::list<vexo::ReportRecord> postponed_;  // Job events waiting for the outermost delivery, in order.
  int deliveries_ = 0;                       // Nesting depth of the deliveries under way.
};

#endif  // VEXO_MONITOR_PRINTER_READ_HELPER_H_
