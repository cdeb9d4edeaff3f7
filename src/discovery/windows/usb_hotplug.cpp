#include "discovery/usb_hotplug.h"

#include <windows.h>

#include <atomic>
#include <mutex>

#include "discovery/usb_callbacks.h"
#include "discovery/windows/usb_monitor_window.h"
#include "platform/mutex.h"
#include "platform/thread.h"
#include "platform/windows/scoped_module.h"

namespace vexo {
namespace {

// Callbacks may call Start and Stop while another thread waits in Stop for them to return, so the monitor's thread
// never takes the lock.
class HotplugMonitor {
 public:
  HotplugMonitor() = default;
  HotplugMonitor(const HotplugMonitor&) = delete;
  HotplugMonitor& operator=(const HotplugMonitor&) = delete;

  // The library stays loaded from Start to Stop, so this runs either when the monitor is stopped or at the end of the
  // process, when the system has already ended the thread and nothing may be unloaded.
  ~HotplugMonitor() { library_.Release(); }

  // Returns false when no thread can be created.
  bool Start() {
    if (thread_.IsCurrent()) {
      return true;
    }
    const std::lock_guard<platform::Mutex> guard(lock_);
    if (started_) {
      return true;
    }
    library_ = platform::ReferenceModuleAt(this);
    stop_requested_ = false;
    started_ = thread_.Start([](void* monitor) { static_cast<HotplugMonitor*>(monitor)->Run(); }, this);
    if (!started_) {
      library_.Reset();
    }
    return started_;
  }

  void Stop() {
    if (thread_.IsCurrent()) {
      RequestStop();
      platform::ThrowDeadlock();
    }
    const std::lock_guard<platform::Mutex> guard(lock_);
    RequestStop();
    thread_.Join();
    UsbCallbacks().RemoveAll();
    UnregisterUsbMonitorClass();
    started_ = false;
    library_.Reset();
  }

 private:
  // Sets the request first and reads the window second; the thread publishes its window first and reads the request
  // second. Whatever the order, one of them sees the other, so a Stop during the thread's start is not lost.
  void RequestStop() {
    stop_requested_ = true;
    if (const HWND window = window_) {
      PostMessageA(window, kUsbMonitorStopMessage, 0, 0);
    }
  }

  void Run() {
    const UsbMonitorWindow window;
    window_ = window.get();
    if (window.valid()) {
      DispatchMessages(window.get());
    }
    window_ = nullptr;
  }

  void DispatchMessages(HWND window) const {
    MSG message = {};
    while (!stop_requested_ && GetMessageA(&message, window, 0, 0) != -1) {
      TranslateMessage(&message);
      DispatchMessageA(&message);
      if (message.message == WM_QUIT || message.message == kUsbMonitorStopMessage) {
        return;
      }
    }
  }

  platform::Mutex lock_;  // Held for the whole of Start or Stop.
  bool started_ = false;
  platform::Thread thread_;
  platform::ScopedModule library_;  // A reference to this library from Start to Stop, because the thread runs its code.
  std::atomic<bool> stop_requested_{false};
  std::atomic<HWND> window_{nullptr};
};

HotplugMonitor g_monitor;

}  // namespace

bool StartUsbHotplugMonitor() { return g_monitor.Start(); }

void StopUsbHotplugMonitor() { g_monitor.Stop(); }

}  // namespace vexo
