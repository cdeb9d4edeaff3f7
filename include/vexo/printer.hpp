/**
 * @file printer.hpp
 * The library for C++ hosts: owning objects, std::function listeners, exceptions or codes by choice. Header-only.
 *
 * Functions that can fail take a pointer to a std::error_code last. Without one they throw a std::system_error; with
 * one they store their result there, success, too, and throw nothing but what lack of memory throws. Codes of the
 * library are in ErrorCategory(), those of the operating system in std::system_category(); both have the number that
 * the C function returned. What each function does, how long it takes and what it returns is said in extend.h, where
 * its C function stands.
 *
 * C++17. Texts are in the code pages that the C functions use.
 */
#ifndef VEXO_PRINTER_HPP_
#define VEXO_PRINTER_HPP_

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

namespace detail {

/**
 * Functions for C callbacks that carry nothing to tell whom they are for: each has an address of its own and calls the
 * listener that it is lent to. An exception of a listener ends here.
 */
template <typename... Arguments>
class CallbackPool {
 public:
  using Listener = std::function<void(Arguments...)>;
  using Function = void (*)(Arguments...);

  static constexpr size_t kSize = 64;

  /** @return a function that calls the listener until GiveBack; null when all of them are lent. */
  static Function Lend(const Listener* listener) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto free = std::find(listeners_.begin(), listeners_.end(), nullptr);
    if (free == listeners_.end()) {
      return nullptr;
    }
    *free = listener;
    return kFunctions[static_cast<size_t>(free - listeners_.begin())];
  }

  /** The function must not be running, nor be called any more. */
  static void GiveBack(const Listener* listener) {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::replace(listeners_.begin(), listeners_.end(), listener, static_cast<const Listener*>(nullptr));
  }

 private:
  template <size_t index>
  static void Call(Arguments... arguments) {
    try {
      (*listeners_[index])(arguments...);
    } catch (...) {  // Not for the library, which another compiler may have built.
    }
  }

  template <size_t... indices>
  static constexpr std::array<Function, kSize> MakeFunctions(std::index_sequence<indices...>) {
    return {&Call<indices>...};
  }

  static constexpr std::array<Function, kSize> kFunctions = MakeFunctions(std::make_index_sequence<kSize>());
  inline static std::mutex mutex_;
  inline static std::array<const Listener*, kSize> listeners_ = {};
};

inline std::string_view TakeUntil(char separator, std::string_view* text) {
  const std::string_view taken = text->substr(0, text->find(separator));
  text->remove_prefix(std::min(taken.size() + 1, text->size()));
  return taken;
}

}  // namespace detail

/** Told how far a download is, 0 to 100 percent, on the thread that called it. */
using ProgressListener = std::function<void(int32_t percentage)>;

/** A printer handle with its port, which it gives back on destruction. To be used by one thread at a time. */
class Printer {
 public:
  /**
   * Makes the port that a descriptor or device URI names ("NET,192.168.1.100", "USB", "COM3,9600"). Printers are not
   * contacted before Open. After an error there is no port, and everything else fails with -309.
   */
  explicit Printer(const std::string& descriptor, std::error_code* error = nullptr)
      : handle_(new VexoPrinterHandle{VEXO_PRINTER_MAGIC, nullptr, nullptr, 0}) {
    // The export that makes a port of any kind without looking for a disk or an imaging device first. On USB it may
    // have found a scanner gun, which is not the printer; of a line it is the one and only opening.
    const int32_t result = ScannerGunPortOpen(handle_.get(), descriptor.c_str());
    line_is_open_ = result == VEXO_OK && kind() == VEXO_PORT_SERIAL;
    handle_->portOpen = 0;
    Report(port() == nullptr ? result : VEXO_OK, "make a port for " + descriptor, error);
  }

  /** Connects; anew, when it is connected already. */
  void Open(std::error_code* error = nullptr) {
    int32_t result = port() == nullptr ? VEXO_ERROR_IO_NOT_OPEN : VEXO_OK;
    if (result == VEXO_OK && !line_is_open_) {
      port()->Close(port());
      result = port()->Open(port());
    }
    line_is_open_ = false;
    handle_->portOpen = result == VEXO_OK ? 1 : 0;
    Report(result, "open the printer", error);
  }

  /** Disconnects; Open connects again. */
  void Close() noexcept {
    if (port() != nullptr) {
      port()->Close(port());
    }
    line_is_open_ = false;
    handle_->portOpen = 0;
  }

  /** Whether the last Open succeeded, and no Close came after it. */
  bool is_open() const noexcept { return handle_->portOpen != 0; }

  /** Of the port, a VexoPortKind; -1 without a port. */
  int32_t kind() const noexcept { return port() == nullptr ? -1 : static_cast<int32_t>(port()->kind); }

  /** The canonical device URI of the port; empty for a buffer port, and without a port. */
  std::string uri() const {
    char text[256] = {};
    uint32_t length = 0;
    if (port() != nullptr) {
      port()->GetUri(port(), text, sizeof text, &length);
    }
    return text;
  }

  /** Sets one limit for connecting, for a write, for an answer and for a gap in it. Before Open. */
  void SetTimeLimit(std::chrono::milliseconds limit, std::error_code* error = nullptr) {
    int32_t result = VEXO_ERROR_IO_NOT_OPEN;
    if (port() != nullptr) {
      const auto milliseconds = static_cast<uint32_t>(limit.count());
      result = port()->SetTimeouts(port(), {milliseconds, 0, milliseconds, 0, milliseconds, milliseconds});
    }
    if (line_is_open_) {
      Close();  // A line takes over its limits when it opens.
    }
    Report(result, "set the time limit", error);
  }

  /** Sends bytes to the printer. @return how many were sent, also after a stored error. */
  size_t Write(std::string_view data, std::error_code* error = nullptr) {
    uint32_t written = 0;
    int32_t result = VEXO_ERROR_IO_NOT_OPEN;
    if (is_open()) {
      const auto* const bytes = reinterpret_cast<const uint8_t*>(data.data());
      result = port()->Write(port(), bytes, 0, static_cast<uint32_t>(data.size()), &written);
    }
    Report(result, "send", error);
    return written;
  }

  /** @return the print width in dots; 0 after a stored error, which is -332 also for an answer of another length. */
  uint32_t GetPrintWidth(std::error_code* error = nullptr) {
    constexpr uint32_t kNone = UINT32_MAX;
    uint32_t width = kNone;
    const int32_t result = ::GetPrintWidth(handle(), &width);
    Report(result == VEXO_OK && width == kNone ? VEXO_ERROR_IO_READ_TIMEOUT : result, "read the print width", error);
    return width == kNone ? 0 : width;
  }

  /** Sets the print width in dots, and makes the printer store it. */
  void SetPrintWidth(uint32_t dots, std::error_code* error = nullptr) {
    Report(::SetPrintWidth(handle(), dots), "set the print width", error);
  }

  /*
   * Downloads. One at a time in a process; setCancel ends it. An exception of the listener cancels the download and
   * then leaves the function.
   */

  /** In packages that the printer confirms; it restarts then. */
  void DownloadFile(const std::string& path, const ProgressListener& progress = nullptr,
                    std::error_code* error = nullptr) {
    Download("download a file", progress, error,
             [&](auto report) { return ::downloadFile(handle(), path.c_str(), nullptr, report); });
  }

  /** @param packet_size data bytes in a package, 1 to 65535. */
  void DownloadFont(const std::string& path, int32_t packet_size, const ProgressListener& progress = nullptr,
                    std::error_code* error = nullptr) {
    Download("download a font", progress, error,
             [&](auto report) { return ::DownloadFontFile(handle(), packet_size, path.c_str(), nullptr, report); });
  }

  /**
   * @param loader descriptor of the printer in its update mode. A success does not tell that the printer took the
   *               image: see DownloadFMWImg.
   */
  void DownloadFirmware(const std::string& path, const std::string& loader, const ProgressListener& progress = nullptr,
                        std::error_code* error = nullptr) {
    Download("download firmware", progress, error,
             [&](auto report) { return ::DownloadFMWImg(handle(), path.c_str(), loader.c_str(), report); });
  }

  /** @param loader descriptor of the printer in its loader; null when it is there already. */
  void DownloadYModem(const std::string& path, const char* loader, const ProgressListener& progress = nullptr,
                      std::error_code* error = nullptr) {
    Download("download by YModem", progress, error,
             [&](auto report) { return ::downloadYModem(handle(), path.c_str(), loader, report); });
  }

  /** For the C functions. Stays where it is when the printer is moved. */
  VexoPrinterHandle* handle() noexcept { return handle_.get(); }

 private:
  struct GiveBack {
    void operator()(VexoPrinterHandle* handle) const noexcept {
      DiskPortOpen(handle, "");  // Opening nothing closes the port and frees it.
      delete handle;
    }
  };

  struct RunningDownload {
    const ProgressListener& progress;
    std::exception_ptr exception;
  };

  VexoPort* port() const noexcept { return handle_->port; }

  template <typename Call>
  static void Download(const char* action, const ProgressListener& progress, std::error_code* error, Call call) {
    RunningDownload download = {progress, nullptr};
    running_ = &download;
    const int32_t result = call(progress ? &Progress : nullptr);
    running_ = nullptr;
    if (download.exception) {
      std::rethrow_exception(download.exception);
    }
    Report(result, action, error);
  }

  static void Progress(int32_t percentage) {
    if (running_->exception) {
      return;
    }
    try {
      running_->progress(percentage);
    } catch (...) {  // Not for the library, which another compiler may have built.
      running_->exception = std::current_exception();
      setCancel();
    }
  }

  inline static thread_local RunningDownload* running_ = nullptr;

  std::unique_ptr<VexoPrinterHandle, GiveBack> handle_;
  bool line_is_open_ = false;  // By the constructor, and nothing else has happened since.
};

/** A print job that started or ended. */
struct JobEvent {
  bool ended;     /**< Or started. */
  int32_t task;   /**< The number that the job was given. */
  uint32_t value; /**< Of an end, as the printer sent it; 0 at a start. */
};

/**
 * A job monitor of one printer. On destruction it stops monitoring, if it started it. Its functions may be called from
 * any thread, also from the listener, but for SetListener and the destructor.
 */
class JobMonitor {
 public:
  /** The command sets of printers. */
  enum class Family : uint32_t { kGs = 0, kV1 = 1 };

  /** Runs on the monitor's thread, or on one that waits for an answer of the printer. Its exceptions are dropped. */
  using Listener = std::function<void(const JobEvent&)>;

  /** @param printer must be open, and stay open and alive for as long as the monitor. */
  explicit JobMonitor(Printer& printer, Family family = Family::kV1, std::error_code* error = nullptr)
      : monitor_(GetReprintMonitorObj()) {
    int32_t result = monitor_ == nullptr ? VEXO_ERROR_MONITOR_OUT_OF_MEMORY : RegisterPrinter(get(), printer.handle());
    if (result == VEXO_OK) {
      result = SelectSDKRepintType(get(), static_cast<uint32_t>(family));
    }
    Report(result, "make a job monitor", error);
  }

  ~JobMonitor() {
    if (started_) {
      CloseReprintMonitorWork(get());
    }
    RemoveListener();
  }
  JobMonitor(const JobMonitor&) = delete;
  JobMonitor& operator=(const JobMonitor&) = delete;

  /**
   * Gives events to a listener from now on, in place of the one before; a null one leaves them to NextEvent. At most 64
   * monitors of a process have listeners at a time: the next one fails with -9.
   */
  void SetListener(Listener listener, std::error_code* error = nullptr) {
    RemoveListener();
    int32_t result = VEXO_OK;
    if (listener) {
      call_ = [listener = std::move(listener)](int32_t event, int32_t task, uint32_t value) {
        listener({event == kEnded, task, value});
      };
      const auto callback = Callbacks::Lend(&call_);
      result = callback == nullptr ? VEXO_ERROR_OUT_OF_MEMORY : AddReprintMonitorFun(get(), callback, &callback_);
      if (result != VEXO_OK) {
        RemoveListener();
      }
    }
    Report(result, "listen to the printer", error);
  }

  /** Switches job monitoring on in the printer. */
  void Start(std::error_code* error = nullptr) {
    const int32_t result = OpenReprintMonitorWork(get());
    started_ = started_ || result == VEXO_OK;
    Report(result, "switch job monitoring on", error);
  }

  /** Switches it off, and forgets all events. */
  void Stop(std::error_code* error = nullptr) {
    const int32_t result = CloseReprintMonitorWork(get());
    started_ = started_ && result != VEXO_OK;
    Report(result, "switch job monitoring off", error);
  }

  /** Asks the printer whether job monitoring is on; a printer of the GS family cannot be asked, but the monitor can. */
  bool IsOn(std::error_code* error = nullptr) {
    char word[8] = {};
    Report(QueryReprintMonitorWork(get(), word, sizeof word), "ask whether job monitoring is on", error);
    return std::string_view(word) == "on";
  }

  /** @return the oldest event that no listener received; nothing when there is none. */
  std::optional<JobEvent> NextEvent() {
    uint16_t status = 0;
    uint32_t complement = 0;
    const int32_t task = GetStatusReport(get(), &status, &complement);
    if (status == 0) {
      return std::nullopt;
    }
    const bool ended = status == kEnded;
    return JobEvent{ended, task, ended ? ~complement : 0};
  }

  /** Gives the next job a task number, 1 to 9999. */
  void SetTask(int32_t task, std::error_code* error = nullptr) {
    Report(SetPrintTaskId(get(), task), "give the job its number", error);
  }

  /** Makes the printer drop its pending tasks. */
  void ClearTasks(std::error_code* error = nullptr) {
    Report(SetClearPrintTask(get()), "clear the printer's tasks", error);
  }

  /** Reads the printer's status. */
  uint32_t GetStatus(std::error_code* error = nullptr) {
    uint32_t complement = UINT32_MAX;
    Report(GetDeviceStatus(get(), &complement), "read the printer's status", error);
    return ~complement;
  }

  /** Feeds paper to the next form. */
  void FeedPaper(std::error_code* error = nullptr) { Report(SetPaperFeed(get()), "feed paper", error); }

  /** For the C functions. */
  CVEXOPrinterReadHelper* get() const noexcept { return monitor_.get(); }

 private:
  using Callbacks = detail::CallbackPool<int32_t, int32_t, uint32_t>;

  static constexpr int32_t kEnded = 2;

  struct Destroy {
    void operator()(CVEXOPrinterReadHelper* monitor) const { DestroyReprintMonitorObj(monitor); }
  };

  void RemoveListener() {
    if (call_) {
      RemoveReprintMonitorFun(get(), callback_);
      Callbacks::GiveBack(&call_);
      call_ = nullptr;
    }
  }

  std::unique_ptr<CVEXOPrinterReadHelper, Destroy> monitor_;
  Callbacks::Listener call_;
  int64_t callback_ = 0;
  bool started_ = false;
};

/**
 * Tells of USB printers that are plugged in and removed, for as long as it exists. The first one of a process starts
 * the library's monitor, the last one stops it: a host that uses objects of this class leaves StartUSBMonitorThread and
 * StopUSBMonitorThread alone. Not to be made or destroyed by a listener.
 */
class UsbWatch {
 public:
  /**
   * Runs on the library's thread. Its exceptions are dropped.
   *
   * @param device serial number of the printer, or a text made by the system for a printer without one.
   */
  using Listener = std::function<void(const std::string& device, bool removed)>;

  /** At most 64 of them in a process: the next one fails with -9. */
  explicit UsbWatch(Listener listener, std::error_code* error = nullptr)
      : call_([listener = std::move(listener)](void*, const char* device, int32_t event) {
          listener(device, event == kRemoved);
        }) {
    const std::lock_guard<std::mutex> guard(mutex_);
    callback_ = Callbacks::Lend(&call_);
    int32_t result = callback_ != nullptr && AddUSBMonitor(callback_, nullptr) > 0 ? VEXO_OK : VEXO_ERROR_OUT_OF_MEMORY;
    if (result == VEXO_OK) {
      result = StartUSBMonitorThread();
    }
    if (result == VEXO_OK) {
      ++watches_;
    } else {
      Remove();
    }
    Report(result, "watch for USB printers", error);
  }

  ~UsbWatch() {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (callback_ != nullptr) {
      --watches_;
      Remove();
      if (watches_ == 0) {
        StopUSBMonitorThread();
      }
    }
  }
  UsbWatch(const UsbWatch&) = delete;
  UsbWatch& operator=(const UsbWatch&) = delete;

 private:
  using Callbacks = detail::CallbackPool<void*, const char*, int32_t>;

  static constexpr int32_t kRemoved = 1;

  void Remove() {
    RemoveUSBMonitor(callback_);
    Callbacks::GiveBack(&call_);
    callback_ = nullptr;
  }

  inline static std::mutex mutex_;
  inline static size_t watches_ = 0;

  const Callbacks::Listener call_;
  Callbacks::Function callback_ = nullptr;
};

/** A USB printer that is connected now; texts are empty where the system tells nothing. */
struct UsbPrinter {
  std::string serial;   /**< Its own or, with "&" in it, one of the system's. */
  std::string name;     /**< The model. */
  std::string ids;      /**< "VID_1A2B&PID_0001". */
  std::string port;     /**< Of the system's printer driver, "USB001". */
  std::string location; /**< The socket, "PORT_#0001.HUB_#0002". */

  /** What a Printer of it is made of; empty when nothing tells it from others. */
  std::string descriptor() const {
    if (!serial.empty()) {
      return "vexo:/dev/bus/USB/" + serial;
    }
    return port.empty() ? "" : "USB," + port;
  }
};

/** Lists the USB printers, 256 at most. */
inline std::vector<UsbPrinter> ListUsbPrinters(std::error_code* error = nullptr) {
  std::vector<char> list(size_t{256} * 256);
  Report(GetUsbDescList(list.data(), static_cast<int32_t>(list.size())), "list the USB printers", error);
  std::vector<UsbPrinter> printers;
  for (std::string_view records(list.data()); !records.empty();) {
    std::string_view record = detail::TakeUntil('|', &records);
    detail::TakeUntil(';', &record);  // "USB,<serial>", and the serial number comes once more.
    UsbPrinter printer;
    for (std::string* const field : {&printer.serial, &printer.name, &printer.ids, &printer.port, &printer.location}) {
      const std::string_view text = detail::TakeUntil(';', &record);
      *field = text == " " ? "" : text;
    }
    printers.push_back(std::move(printer));
  }
  return printers;
}

/** A printer that was found on the network, and what it told of itself, in an order of its own. */
struct NetworkPrinter {
  std::vector<std::string> fields; /**< At least one: its address. */

  /** What a Printer of it is made of. */
  std::string descriptor() const { return "NET," + fields.front(); }
};

/** ScanPos or ScanLabel. */
using NetworkScan = int32_t (*)(int64_t time_limit, char* buffer, int32_t size, const char* target);

/**
 * Scans the network for printers; blocks for the time limit and the questions to the printers found, 4096 at most. No
 * printer is no error.
 *
 * @param scan ScanPos for receipt printers, ScanLabel for label printers.
 */
inline std::vector<NetworkPrinter> ScanNetwork(NetworkScan scan, std::chrono::milliseconds time_limit,
                                               const std::string& target = "255.255.255.255",
                                               std::error_code* error = nullptr) {
  constexpr size_t kSize = size_t{4096} * 256;
  std::vector<char> list(kSize + 1);
  const int32_t result = scan(time_limit.count(), list.data(), static_cast<int32_t>(kSize), target.c_str());
  Report(result == VEXO_ERROR_NO_PRINTER ? VEXO_OK : result, "scan " + target, error);
  std::vector<NetworkPrinter> printers;
  for (std::string_view records(list.data()); !records.empty();) {
    std::string_view record = detail::TakeUntil('|', &records);
    NetworkPrinter printer;
    for (bool last = false; !last;) {
      last = record.find(';') == std::string_view::npos;
      printer.fields.emplace_back(detail::TakeUntil(';', &record));
    }
    printers.push_back(std::move(printer));
  }
  return printers;
}

}  // namespace vexo

#endif  // VEXO_PRINTER_HPP_
