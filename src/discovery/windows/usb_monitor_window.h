// The hidden window that the system tells of devices that come and go.
#ifndef VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_
#define VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_

#include <windows.h>

namespace vexo {

// Ends the message loop.
constexpr UINT kUsbMonitorStopMessage = WM_USER + 2;

// Events of USB printers go from the window to UsbCallbacks(), on the thread that made the window: windows belong to
// their thread, so it must also be the one that destroys it.
class UsbMonitorWindow {
 public:
  // When the system does not give a window, valid() is false; without its notifications, the window hears nothing.
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

// The class belongs to the program, not to this library, and would outlive it. Fails while there is a window of it.
void UnregisterUsbMonitorClass();

}  // namespace vexo

#endif  // VEXO_DISCOVERY_WINDOWS_USB_MONITOR_WINDOW_H_
