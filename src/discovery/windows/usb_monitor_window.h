// The hidden window that receives the system's device notifications.
#ifndef VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_
#define VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_

#include <windows.h>

namespace vexo {

// Ends the message loop.
constexpr UINT kUsbMonitorStopMessage = WM_USER + 2;

// Delivers events of USB printers to UsbCallbacks() on the thread that created the window. Windows belong to their
// thread, so the same thread must destroy it.
class UsbMonitorWindow {
 public:
  // If the window cannot be created, valid() is false. Without notifications the window receives nothing.
  UsbMonitorWindow();
  ~UsbMonitorWindow();
  UsbMonitorWindow(const UsbMonitorWindow&) = delete;
  UsbMonitorWindow& operator=(const UsbMonitorWindow&) = delete;

  bool valid() const { return window_ != nullptr; }
  HWND get() const { return window_; }

 private:
  HWND window_ = nullptr;
  void* notification_ = nullptr;
};

// The class belongs to the program, not to this library, and would outlive it. Fails while a window of the class
// exists.
void UnregisterUsbMonitorClass();

}  // namespace vexo

#endif  // VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_
