// What happens to a command that listens to a printer, brought to its main thread from wherever it happens.
#ifndef VEXOCTL_NEWS_H_
#define VEXOCTL_NEWS_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace vexoctl {

// A job that started or ended.
struct JobEvent {
  std::chrono::system_clock::time_point time;  // When the library delivered it.
  bool ended = false;
  int32_t task = 0;
  uint32_t value = 0;  // Of an end, as the printer sent it.
};

// A USB printer that was plugged in or removed.
struct UsbEvent {
  std::chrono::system_clock::time_point time;  // When the library told of it.
  bool removed = false;
  std::string device;  // As the library names it.
};

struct News {
  enum class Kind {
    kJobEvent,
    kUsbEvent,
    kConnectionLost,
    kInterrupted,  // The user wants the command to end.
  };

  Kind kind = Kind::kInterrupted;
  JobEvent event;    // Of kJobEvent.
  UsbEvent usb;      // Of kUsbEvent.
  int32_t code = 0;  // Of kConnectionLost: why, as the port put it.
};

using Deadline = std::chrono::steady_clock::time_point;

// Keeps the news in the order in which they came. Any thread may post; posting is quick, as the library's reader thread
// and the system's console thread have other things to do.
class NewsQueue {
 public:
  void Post(const News& news);

  // The oldest news, as soon as there are any. Empty when none have come by the deadline; no deadline: waits on.
  std::optional<News> Wait(std::optional<Deadline> deadline);

  // The oldest news there are now.
  std::optional<News> Take();

 private:
  std::optional<News> TakeLocked();

  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<News> news_;
};

// The queue of this process: neither the library's callbacks nor the console's handlers are told whom they work for.
// Lives until the process ends, for a console thread may post at the very last moment.
NewsQueue& AllNews();

// A MonitorCallback: posts the event to AllNews.
void PostJobEvent(int32_t event, int32_t task, uint32_t value);

// The same for USB printers.
void PostUsbEvent(const std::string& device, bool removed);

}  // namespace vexoctl

#endif  // VEXOCTL_NEWS_H_
