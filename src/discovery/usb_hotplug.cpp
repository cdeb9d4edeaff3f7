#include "discovery/usb_hotplug.h"

#include <windows.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "discovery/usb_callback_registry.h"
#include "discovery/usb_monitor_window.h"
#include "platform/mutex.h"
#include "platform/windows/scoped_module.h"

namespace vexo {
namespace {

// Callbacks call Start and Stop while another thread may be waiting in Stop for their end: the monitor's thread never
// takes the lock.
class HotplugMonitor {
 public:
  HotplugMonitor() = default;
  HotplugMonitor(const HotplugMonitor&) = delete;
  HotplugMonitor& operator=(const HotplugMonitor&) = delete;

  // While a session lasts, the library stays loaded. So this runs without one, or at the end of the process, when the
  // system has ended the thread already: there is nothing left to wait for, and a thread object that is destroyed
  // before it is joined would abort the host.
  ~HotplugMonitor() { static_cast<void>(session_.release()); }

  void Start() {
    if (IsOwnThread()) {
      return;
    }
    const std::lock_guard<std::mutex> guard(lock_);
    if (session_ != nullptr) {
      return;
    }
    auto session = std::make_unique<Session>();
    session->library = platform::ScopedModule::At(this);
    stop_requested_ = false;
    session->thread = std::thread([this] { Run(); });
    session_ = std::move(session);
  }

  void Stop() {
    if (IsOwnThread()) {
      RequestStop();
      // In these words: those of the code itself differ from one C++ library to the next.
      throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                              "resource deadlock would occur");
    }
    const std::lock_guard<std::mutex> guard(lock_);
    RequestStop();
    if (session_ != nullptr) {
      session_->thread.join();
    }
    UsbCallbacks().RemoveAll();
    UnregisterUsbMonitorClass();
    session_.reset();
  }

 private:
  // From a start to a stop.
  struct Session {
    platform::ScopedModule library;  // This one: its code must be there as long as the thread runs.
    std::thread thread;
  };

  bool IsOwnThread() const { return thread_id_ == GetCurrentThreadId(); }

  // The request is noted before the window is looked at, and the thread shows its window before it looks for a request:
  // a stop that comes while the thread is starting is seen by one of the two.
  void RequestStop() {
    stop_requested_ = true;
    if (const HWND window = window_) {
      PostMessageA(window, kUsbMonitorStopMessage, 0, 0);
    }
  }

  void Run() {
    thread_id_ = GetCurrentThreadId();
    {
      const UsbMonitorWindow window;
      window_ = window.get();
      if (window.valid()) {
        DispatchMessages(window.get());
      }
      window_ = nullptr;
    }
    thread_id_ = 0;
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

  platform::Mutex lock_;  // Held over a whole start or stop.
  std::unique_ptr<Session> session_;
  std::atomic<bool> stop_requested_{false};
  std::atomic<HWND> window_{nullptr};
  std::atomic<DWORD> thread_id_{0};  // 0: none that runs.
};

HotplugMonitor g_monitor;

}  // namespace

void StartUsbHotplugMonitor() { g_monitor.Start(); }

void StopUsbHotplugMonitor() { g_monitor.Stop(); }

}  // namespace vexo
