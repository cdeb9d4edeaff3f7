// Events of printers and of the console, brought to the main thread from whatever thread they happen on.
#ifndef VEXOCTL_SUPPORT_EVENTS_H_
#define VEXOCTL_SUPPORT_EVENTS_H_

#include <CLI/CLI.hpp>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "vexo/printer.hpp"

namespace vexoctl {

struct Event {
  enum class Kind {
    kJob,             // A job started or ended.
    kUsbPrinter,      // A USB printer was plugged in or removed.
    kConnectionLost,  // The printer is gone.
    kInterrupt,       // The user wants the command to end.
  };

  Kind kind = Kind::kInterrupt;
  std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
  vexo::JobEvent job = {};       // Of kJob.
  std::string usb_device = {};   // Of kUsbPrinter, as the library names it.
  bool usb_removed = false;      // Of kUsbPrinter.
  int32_t port_error = VEXO_OK;  // Of kConnectionLost.
};

using Deadline = std::chrono::steady_clock::time_point;

// Any thread may post. Posting does not block the threads of the library and of the system that do it.
class EventQueue {
 public:
  void Post(const Event& event);

  // Waits for an event until the deadline, or for ever. Empty after the deadline.
  std::optional<Event> Wait(std::optional<Deadline> deadline);

  // The oldest event that is there now.
  std::optional<Event> Take();

 private:
  std::optional<Event> TakeLocked();

  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<Event> events_;
};

// The queue of the process: neither the library's callbacks nor the console's handlers have a context. It is never
// destroyed, because a console thread may post while the process ends.
EventQueue& Events();

// These post to Events().
void PostInterrupt();
void PostJobEvent(const vexo::JobEvent& job);
void PostUsbEvent(const std::string& device, bool removed);

// When a command that shows events ends by itself: after a number of events, or after a time from Start on.
class EventLimits {
 public:
  EventLimits(std::optional<uint32_t> count, std::optional<std::chrono::milliseconds> time)
      : events_left_(count), time_(time) {}

  void Start();
  std::optional<Deadline> end() const { return end_; }
  bool IsOver() const { return end_ && std::chrono::steady_clock::now() >= *end_; }

  // Counts an event. Returns whether it was the last one.
  bool CountEvent() { return events_left_ && --*events_left_ == 0; }

 private:
  std::optional<uint32_t> events_left_;
  std::optional<std::chrono::milliseconds> time_;
  std::optional<Deadline> end_;
};

// The options --count and --for of such a command.
class EventLimitOptions {
 public:
  explicit EventLimitOptions(CLI::App* command);

  // Valid once the whole command line has been read.
  EventLimits Read() const;

 private:
  CLI::Option* count_;
  CLI::Option* time_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_EVENTS_H_
