/**
 * @file usb.hpp
 * USB printers for C++ hosts: a list of them, and their comings and goings. Part of printer.hpp.
 */
#ifndef VEXO_USB_HPP_
#define VEXO_USB_HPP_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vexo/detail/callback_pool.hpp"
#include "vexo/detail/split.hpp"
#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

/**
 * Reports USB printers that are plugged in and removed, for as long as it exists. The first one of a process starts the
 * library's monitor, the last one stops it: do not call StartUSBMonitorThread and StopUSBMonitorThread yourself. Do not
 * make or destroy one in a listener.
 */
class UsbWatch {
 public:
  /**
   * Runs on the library's thread. Its exceptions are dropped.
   *
   * @param device serial number of the printer, or a text made by the system if it has none.
   */
  using Listener = std::function<void(const std::string& device, bool removed)>;

  /** At most 64 of them in a process: the next one fails with VEXO_ERROR_OUT_OF_MEMORY. */
  explicit UsbWatch(Listener listener, std::error_code* error = nullptr)
      : call_([listener = std::move(listener)](void*, const char* device, int32_t event) {
          listener(device, event == VEXO_USB_REMOVED);
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
    StoreOrThrow(result, "watch for USB printers", error);
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

/** A USB printer that is connected; texts that the system does not know are empty. */
struct UsbPrinter {
  std::string serial;   /**< Its serial number or, with "&" in it, one of the system's. */
  std::string name;     /**< The model. */
  std::string ids;      /**< "VID_1A2B&PID_0001". */
  std::string port;     /**< Port of the system's printer driver, "USB001". */
  std::string location; /**< The socket, "PORT_#0001.HUB_#0002". */

  /** @return the descriptor to make a Printer of; empty if nothing identifies the printer. */
  std::string descriptor() const {
    if (!serial.empty()) {
      return "vexo:/dev/bus/USB/" + serial;
    }
    return port.empty() ? "" : "USB," + port;
  }
};

/** Lists the USB printers, 256 at most. */
inline std::vector<UsbPrinter> ListUsbPrinters(std::error_code* error = nullptr) {
  std::vector<char> list(size_t{256} * VEXO_USB_RECORD_SIZE);
  StoreOrThrow(GetUsbDescList(list.data(), static_cast<int32_t>(list.size())), "list the USB printers", error);
  std::vector<UsbPrinter> printers;
  for (const std::string& record : detail::SplitRecords(list.data(), '|')) {
    std::string_view fields = record;
    detail::TakeUntil(';', &fields);  // "USB,<serial>"; the next field is the serial number, too.
    UsbPrinter printer;
    for (std::string* const field : {&printer.serial, &printer.name, &printer.ids, &printer.port, &printer.location}) {
      const std::string_view text = detail::TakeUntil(';', &fields);
      *field = text == " " ? "" : text;
    }
    printers.push_back(std::move(printer));
  }
  return printers;
}

}  // namespace vexo

#endif  // VEXO_USB_HPP_
