// The USB hot-plug monitor of the DLL: its thread and its hidden window, which receives the system's device messages.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <system_error>
#include <thread>
#include <utility>

#include "simulators/device_broadcast.h"
#include "support/threads.h"
#include "vexo/extend.h"
#include "windows/process_resources.h"
#include "windows/replaced_imports.h"

namespace vexo::test {
namespace {

using simulators::Broadcast;
using simulators::kDiskClass;
using simulators::kMonitorClass;
using simulators::kPrinterClass;
using simulators::MonitorWindows;

constexpr UINT kStopMessage = 0x402;
constexpr char kPath[] = R"(\\?\USB#VID_1A2B&PID_0001#abc123#{28d78fad-5a12-11d1-ae5b-0000f803a8c2})";

using Texts = std::vector<std::string>;

HWND AwaitWindow() {
  EXPECT_TRUE(Eventually([] { return !MonitorWindows().empty(); }));
  return MonitorWindows().front();
}

// A callback's context: the events received and an additional action. Broadcast returns after the callbacks, so no lock
// is needed.
struct Listener {
  Texts Take() { return std::exchange(events, {}); }

  Texts events;
  std::thread::id thread;
  std::function<void()> action;
};

void Listen(void* context, const char* device, int32_t event) {
  auto* const listener = static_cast<Listener*>(context);
  listener->events.push_back(std::string(device) + " " + std::to_string(event));
  listener->thread = std::this_thread::get_id();
  if (listener->action) {
    listener->action();
  }
}

class UsbMonitor : public ::testing::Test {
 protected:
  ~UsbMonitor() override {
    EXPECT_EQ(StopUSBMonitorThread(), 0);
    EXPECT_TRUE(MonitorWindows().empty());
    WNDCLASSEXA description = {};
    EXPECT_EQ(GetClassInfoExA(GetModuleHandleA(nullptr), kMonitorClass, &description), 0)
        << "a window class may outlive its code";
  }

  static HWND Start() {
    EXPECT_EQ(StartUSBMonitorThread(), 0);
    return AwaitWindow();
  }

  Listener listener_;
  Listener other_;
};

TEST_F(UsbMonitor, CallbacksReceiveArrivalsAndRemovals) {
  EXPECT_EQ(AddUSBMonitor(Listen, &other_), reinterpret_cast<intptr_t>(&Listen));
  const HWND window = Start();
  EXPECT_EQ(AddUSBMonitor(Listen, &listener_), reinterpret_cast<intptr_t>(&Listen))
      << "the second context replaces the first";
  EXPECT_EQ(AddUSBMonitor(nullptr, &listener_), 0);
  EXPECT_EQ(Start(), window) << "already running";
  EXPECT_EQ(MonitorWindows().size(), 1U);
  Broadcast(window, DBT_DEVICEARRIVAL, kPath);
  Broadcast(window, DBT_DEVICEREMOVECOMPLETE, R"(\\?\USB#VID_1A2B&PID_0001#7&1a2b&0&1#{28d78fad})");
  EXPECT_EQ(listener_.Take(), (Texts{"ABC123 0", "7&1A2B&0&1 1"}));
  EXPECT_NE(listener_.thread, std::this_thread::get_id());
  EXPECT_EQ(other_.Take(), Texts{});

  Broadcast(window, DBT_DEVICEQUERYREMOVE, kPath);
  Broadcast(window, DBT_DEVICEARRIVAL, kPath, kDiskClass);
  Broadcast(window, DBT_DEVICEARRIVAL, kPath, kPrinterClass, DBT_DEVTYP_HANDLE);
  Broadcast(window, DBT_DEVICEARRIVAL, "USB#VID_1A2B&PID_0001");
  SendMessageA(window, WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0);
  EXPECT_EQ(listener_.Take(), Texts{});

  EXPECT_EQ(RemoveUSBMonitor(Listen), 1);
  EXPECT_EQ(RemoveUSBMonitor(Listen), 1);
  Broadcast(window, DBT_DEVICEARRIVAL, kPath);
  EXPECT_EQ(listener_.Take(), Texts{});
}

// The library's calls to the system.
struct {
  int registered = 0;
  int unregistered = 0;
  HANDLE window = nullptr;
  DWORD flags = 0;
  DEV_BROADCAST_DEVICEINTERFACE_A filter = {};
} g_notifications;

HDEVNOTIFY WINAPI Register(HANDLE window, void* filter, DWORD flags) {
  g_notifications = {g_notifications.registered + 1, g_notifications.unregistered, window, flags, {}};
  memcpy(&g_notifications.filter, filter, sizeof(g_notifications.filter));
  return &g_notifications;
}

BOOL WINAPI Unregister(HDEVNOTIFY notification) {
  g_notifications.unregistered += notification == &g_notifications ? 1 : 0;
  return TRUE;
}

TEST_F(UsbMonitor, RegistersAndUnregistersNotifications) {
  const ScopedImports imports(GetModuleHandleA("vexoextend.dll"), "user32.dll",
                              {{"RegisterDeviceNotificationA", reinterpret_cast<void*>(Register)},
                               {"UnregisterDeviceNotification", reinterpret_cast<void*>(Unregister)}});
  const HWND window = Start();
  EXPECT_EQ(StopUSBMonitorThread(), 0);
  EXPECT_EQ(g_notifications.registered, 1);
  EXPECT_EQ(g_notifications.unregistered, 1);
  EXPECT_EQ(g_notifications.window, window);
  EXPECT_EQ(g_notifications.flags, DWORD{DEVICE_NOTIFY_WINDOW_HANDLE | DEVICE_NOTIFY_ALL_INTERFACE_CLASSES});
  EXPECT_EQ(g_notifications.filter.dbcc_size, sizeof(DEV_BROADCAST_DEVICEINTERFACE_A));
  EXPECT_EQ(g_notifications.filter.dbcc_devicetype, DWORD{DBT_DEVTYP_DEVICEINTERFACE});
  EXPECT_EQ(memcmp(&g_notifications.filter.dbcc_classguid, &kPrinterClass, sizeof(GUID)), 0);
}

TEST_F(UsbMonitor, StopWaitsForCallbacksAndRemovesThem) {
  std::atomic<bool> called{false};
  std::atomic<bool> stopping{false};
  std::atomic<bool> returned{false};
  listener_.action = [&] {
    called = true;
    Eventually([&] { return stopping.load(); });
    returned = true;
  };
  AddUSBMonitor(Listen, &listener_);
  const HWND window = Start();
  std::thread system([window] { Broadcast(window, DBT_DEVICEARRIVAL, kPath); });
  EXPECT_TRUE(Eventually([&] { return called.load(); }));
  stopping = true;
  EXPECT_EQ(StopUSBMonitorThread(), 0);
  EXPECT_TRUE(returned);
  system.join();
  Broadcast(Start(), DBT_DEVICEARRIVAL, kPath);
  EXPECT_EQ(listener_.Take(), Texts{"ABC123 0"}) << "removed by the stop";
}

TEST_F(UsbMonitor, StopInACallbackThrowsAndEndsTheThread) {
  std::atomic<int> error{0};
  listener_.action = [&] {
    try {
      StopUSBMonitorThread();
    } catch (const std::system_error& deadlock) {
      EXPECT_EQ(std::string(deadlock.what()).find("resource deadlock would occur"), 0U) << deadlock.what();
      error = deadlock.code().value();
      throw;
    }
  };
  AddUSBMonitor(Listen, &listener_);
  Broadcast(Start(), DBT_DEVICEARRIVAL, kPath);
  EXPECT_EQ(error, EDEADLK);
  EXPECT_TRUE(Eventually([] { return MonitorWindows().empty(); }));
  EXPECT_EQ(StartUSBMonitorThread(), 0);
  EXPECT_TRUE(MonitorWindows().empty()) << "must be stopped first";
}

// The stop must not hang after another program has closed the window or ended the message loop.
TEST_F(UsbMonitor, StopsAfterItsWindowHasBeenClosed) {
  for (const UINT ending : {UINT{WM_CLOSE}, UINT{WM_QUIT}, kStopMessage}) {
    PostMessageA(Start(), ending, 0, 0);
    EXPECT_TRUE(Eventually([] { return MonitorWindows().empty(); }));
    EXPECT_EQ(StopUSBMonitorThread(), 0);
  }
}

TEST_F(UsbMonitor, RepeatedStartAndStopLeakNothing) {
  constexpr size_t kRounds = 200;
  size_t handles = 0;
  size_t threads = 0;
  for (size_t round = 0; round < kRounds + 10; ++round) {
    if (round == 10) {  // The system has initialised its notifications.
      handles = CountHandles();
      threads = CountThreads();
    }
    ASSERT_EQ(StartUSBMonitorThread(), 0);
    if (round % 2 == 0) {  // Otherwise the stop comes while the thread is starting.
      ASSERT_NE(AwaitWindow(), nullptr);
    }
    ASSERT_EQ(StopUSBMonitorThread(), 0);
    ASSERT_TRUE(MonitorWindows().empty());
  }
  // The number of the system's own notification threads varies. A leak would be at least one in each round.
  EXPECT_LT(CountHandles(), handles + kRounds / 2);
  EXPECT_LT(CountThreads(), threads + kRounds / 2);
}

TEST_F(UsbMonitor, ExportsOnSeveralThreads) {
  RunOnThreads(4, [this](int thread) {
    for (int round = 0; round < 200; ++round) {
      StartUSBMonitorThread();
      AddUSBMonitor(Listen, &listener_);
      for (const HWND window : MonitorWindows()) {
        Broadcast(window, DBT_DEVICEARRIVAL, kPath);
      }
      thread < 2 ? StopUSBMonitorThread() : RemoveUSBMonitor(Listen);
    }
  });
}

// The test program never unloads its own DLL, so this test loads a copy.
TEST_F(UsbMonitor, LibraryStaysLoadedUntilTheStop) {
  const std::string copy = "vexoextend_usb_copy_" + std::to_string(GetCurrentProcessId()) + ".dll";
  char path[MAX_PATH] = {};
  ASSERT_NE(GetModuleFileNameA(GetModuleHandleA("vexoextend.dll"), path, MAX_PATH), 0U);
  ASSERT_NE(CopyFileA(path, copy.c_str(), FALSE), 0);
  const auto load_and_call = [&copy](const char* name) {
    const HMODULE library = LoadLibraryA(copy.c_str());
    const auto function =
        reinterpret_cast<decltype(&StartUSBMonitorThread)>(reinterpret_cast<void*>(GetProcAddress(library, name)));
    EXPECT_EQ(function(), 0);
    FreeLibrary(library);
  };
  load_and_call("StartUSBMonitorThread");
  EXPECT_NE(GetModuleHandleA(copy.c_str()), nullptr);
  Broadcast(AwaitWindow(), DBT_DEVICEARRIVAL, kPath);
  load_and_call("StopUSBMonitorThread");
  EXPECT_EQ(GetModuleHandleA(copy.c_str()), nullptr);
  EXPECT_NE(DeleteFileA(copy.c_str()), 0);
}

TEST(UsbMonitorDeathTest, ProcessExitsWhileTheMonitorRuns) {
  EXPECT_EXIT(
      {
        StartUSBMonitorThread();
        AwaitWindow();
        std::exit(7);
      },
      ::testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace vexo::test
