/**
 * @file monitor.hpp
 * The job monitor for C++ hosts. Part of printer.hpp.
 */
#ifndef VEXO_MONITOR_HPP_
#define VEXO_MONITOR_HPP_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vexo/detail/callback_pool.hpp"
#include "vexo/detail/split.hpp"
#include "vexo/error.hpp"
#include "vexo/extend.h"
#include "vexo/port.hpp"

namespace vexo {

/** A print job that started or ended. */
struct JobEvent {
  bool ended;     /**< Whether it ended; otherwise it started. */
  int32_t task;   /**< Task number of the job. */
  uint32_t value; /**< The value that the printer sends with an end; 0 at a start. */
};

/**
 * A job monitor of one printer. On destruction it stops monitoring, if it started it. Threads: any, also the
 * listener's, except for SetListener, Print and the destructor.
 */
class JobMonitor {
 public:
  /** Protocol families of printers. */
  enum class Family : uint32_t { kGs = VEXO_FAMILY_GS, kV1 = VEXO_FAMILY_V1 };

  /** Runs on the monitor's thread, or on one that waits for an answer of the printer. Its exceptions are dropped. */
  using Listener = std::function<void(const JobEvent&)>;

  /** @param printer must be open, and stay open and alive as long as the monitor; it may be moved. */
  explicit JobMonitor(Port& printer, Family family = Family::kV1, std::error_code* error = nullptr)
      : printer_(printer.handle()), monitor_(GetReprintMonitorObj()) {
    int32_t result = monitor_ == nullptr ? VEXO_ERROR_MONITOR_OUT_OF_MEMORY : RegisterPrinter(get(), printer_);
    if (result == VEXO_OK) {
      result = SelectSDKRepintType(get(), static_cast<uint32_t>(family));
    }
    StoreOrThrow(result, "make a job monitor", error);
  }

  ~JobMonitor() {
    if (stop_at_end_) {
      CloseReprintMonitorWork(get());
    }
  }
  JobMonitor(const JobMonitor&) = delete;
  JobMonitor& operator=(const JobMonitor&) = delete;

  /** Sets how long a function waits for the printer's answer; 1 s until set. */
  void SetReadTimeout(std::chrono::milliseconds timeout, std::error_code* error = nullptr) {
    StoreOrThrow(SetReadTimeOut(get(), timeout.count()), "set the read timeout", error);
  }

  /** Sets the pause between two polls of the printer; 100 ms until set. */
  void SetPollingTime(std::chrono::milliseconds pause, std::error_code* error = nullptr) {
    StoreOrThrow(::SetPollingTime(get(), pause.count()), "set the polling time", error);
  }

  /**
   * Passes events to a listener from now on, in place of the previous one; a null one leaves them to NextEvent. At most
   * 64 monitors of a process can have listeners: the next one fails with VEXO_ERROR_OUT_OF_MEMORY.
   */
  void SetListener(Listener listener, std::error_code* error = nullptr) {
    listener_.reset();
    int32_t result = VEXO_OK;
    if (listener) {
      listener_.emplace(get(), std::move(listener));
      result = listener_->result();
    }
    StoreOrThrow(result, "listen to the printer", error);
  }

  /** Switches job monitoring on in the printer. */
  void Start(std::error_code* error = nullptr) {
    const int32_t result = OpenReprintMonitorWork(get());
    stop_at_end_ = stop_at_end_ || result == VEXO_OK;
    StoreOrThrow(result, "switch job monitoring on", error);
  }

  /** Switches it off, and drops all events. */
  void Stop(std::error_code* error = nullptr) {
    const int32_t result = CloseReprintMonitorWork(get());
    stop_at_end_ = stop_at_end_ && result != VEXO_OK;
    StoreOrThrow(result, "switch job monitoring off", error);
  }

  /** Leaves monitoring on in the printer on destruction: for another host, or because the printer is gone. */
  void LeaveOn() noexcept { stop_at_end_ = false; }

  /** Asks the printer whether job monitoring is on; with Family::kGs, the monitor itself. */
  bool IsOn(std::error_code* error = nullptr) {
    char word[8] = {};
    StoreOrThrow(QueryReprintMonitorWork(get(), word, sizeof word), "ask whether job monitoring is on", error);
    return std::string_view(word) == "on";
  }

  /** @return the oldest event that no listener received, if any. */
  std::optional<JobEvent> NextEvent() {
    uint16_t status = 0;
    uint32_t complement = 0;
    const int32_t task = GetStatusReport(get(), &status, &complement);
    if (status == 0) {
      return std::nullopt;
    }
    const bool ended = status == VEXO_JOB_ENDED;
    return JobEvent{ended, task, ended ? ~complement : 0};
  }

  /** Gives the next job a task number, VEXO_TASK_LOWEST to VEXO_TASK_HIGHEST. */
  void SetTask(int32_t task, std::error_code* error = nullptr) {
    StoreOrThrow(SetPrintTaskId(get(), task), "set the task number", error);
  }

  /**
   * Prints a job under a task number and waits until the printer reports its end. Call Start before. Events also go to
   * the listener; NextEvent misses those that arrive meanwhile.
   *
   * @param timeout counted from the last byte sent; then the error is VEXO_ERROR_MONITOR_NO_ANSWER.
   * @return the value that the printer sends with the end; 0 after a stored error.
   */
  uint32_t Print(std::string_view job, int32_t task, std::chrono::milliseconds timeout,
                 std::error_code* error = nullptr) {
    std::promise<uint32_t> end;
    std::future<uint32_t> value = end.get_future();
    const Registration registration(get(), [&end, task](const JobEvent& event) {
      if (event.ended && event.task == task) {
        end.set_value(event.value);
      }
    });
    int32_t result = registration.result() == VEXO_OK ? SetPrintTaskId(get(), task) : registration.result();
    if (result == VEXO_OK) {
      size_t sent = 0;
      result = detail::WriteAll(printer_, job, &sent);
    }
    if (result == VEXO_OK && value.wait_for(timeout) != std::future_status::ready) {
      result = VEXO_ERROR_MONITOR_NO_ANSWER;
    }
    StoreOrThrow(result, "print task " + std::to_string(task), error);
    return result == VEXO_OK ? value.get() : 0;
  }

  /** Makes the printer drop its pending tasks. */
  void ClearTasks(std::error_code* error = nullptr) {
    StoreOrThrow(SetClearPrintTask(get()), "clear the printer's tasks", error);
  }

  /** Makes the printer number its tasks anew. */
  void ResetTaskNumbers(std::error_code* error = nullptr) {
    StoreOrThrow(ResetPrinterInteriorId(get(), VEXO_RESET_AWAIT_ANSWER), "reset the task numbers", error);
  }

  /** @return the printer's status, as the printer sends it. */
  uint32_t GetStatus(std::error_code* error = nullptr) {
    uint32_t complement = UINT32_MAX;
    StoreOrThrow(GetDeviceStatus(get(), &complement), "read the printer's status", error);
    return ~complement;
  }

  /** Feeds paper to the next form. */
  void FeedPaper(std::error_code* error = nullptr) { StoreOrThrow(SetPaperFeed(get()), "feed paper", error); }

  /** For the C functions. */
  CVEXOPrinterReadHelper* get() const noexcept { return monitor_.get(); }

 private:
  struct Destroy {
    void operator()(CVEXOPrinterReadHelper* monitor) const { DestroyReprintMonitorObj(monitor); }
  };

  /** Delivers events to a listener for as long as it exists. */
  class Registration {
   public:
    Registration(CVEXOPrinterReadHelper* monitor, Listener listener)
        : monitor_(monitor), call_([listener = std::move(listener)](int32_t event, int32_t task, uint32_t value) {
            listener({event == VEXO_JOB_ENDED, task, value});
          }) {
      const auto callback = Callbacks::Lend(&call_);
      result_ = callback == nullptr ? VEXO_ERROR_OUT_OF_MEMORY : AddReprintMonitorFun(monitor, callback, &id_);
    }
    ~Registration() {
      RemoveReprintMonitorFun(monitor_, id_);
      Callbacks::GiveBack(&call_);
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    int32_t result() const { return result_; }

   private:
    using Callbacks = detail::CallbackPool<int32_t, int32_t, uint32_t>;

    CVEXOPrinterReadHelper* const monitor_;
    const Callbacks::Listener call_;
    int64_t id_ = 0;
    int32_t result_ = VEXO_OK;
  };

  VexoPrinterHandle* const printer_;
  std::unique_ptr<CVEXOPrinterReadHelper, Destroy> monitor_;
  std::optional<Registration> listener_;
  bool stop_at_end_ = false;
};

/**
 * Listens to a printer for a while, without a monitor. @return the texts that it sends about finished tasks. Without
 * any reply the error is VEXO_ERROR_IO_READ_TIMEOUT, or VEXO_ERROR_IO_READ if the printer reconnected.
 */
inline std::vector<std::string> ReadTaskOverInfo(Port& printer, std::chrono::milliseconds time,
                                                 std::error_code* error = nullptr) {
  constexpr uint32_t kNothing = UINT32_MAX;
  // The library reads at most 256 bytes in every 20 ms; some more are for the first and the last read.
  std::vector<char> texts((static_cast<size_t>(time.count()) / 20 + 3) * 256);
  uint32_t length = kNothing;
  int32_t result = GetPrinterTaskOverInfo(printer.handle(), static_cast<int32_t>(time.count()), texts.data(),
                                          static_cast<uint32_t>(texts.size()), &length);
  if (length == kNothing) {
    result = result == VEXO_OK ? VEXO_ERROR_IO_READ : result;
    length = 0;
  }
  StoreOrThrow(result, "listen for finished tasks", error);
  return detail::SplitRecords({texts.data(), length}, '|');
}

}  // namespace vexo

#endif  // VEXO_MONITOR_HPP_
