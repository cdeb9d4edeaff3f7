#include "discovery/windows/usb_monitor_window.h"

// After windows.h.
#include <dbt.h>

#include <new>
#include <string>

#include "discovery/interface_path.h"
#include "discovery/usb_callbacks.h"

namespace vexo {
namespace {

constexpr char kClassName[] = "USBMonitorClass";
constexpr char kTitle[] = "USBMonitor";

constexpr GUID kUsbPrinterInterface = {0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};

void DeliverDevice(const DEV_BROADCAST_DEVICEINTERFACE_A& broadcast, int32_t event) {
  try {
    const std::string device = InstanceOfInterfacePath(broadcast.dbcc_name);
    if (!device.empty()) {
      DeliverUsbEvent(device.c_str(), event);
    }
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the event is lost; nothing can be reported.
  }
}

void ReactToInterface(WPARAM change, const DEV_BROADCAST_DEVICEINTERFACE_A& broadcast) {
  if (IsEqualGUID(broadcast.dbcc_classguid, kUsbPrinterInterface) == 0) {
    return;
  }
  if (change == DBT_DEVICEARRIVAL) {
    DeliverDevice(broadcast, VEXO_USB_PLUGGED_IN);
  } else if (change == DBT_DEVICEREMOVECOMPLETE) {
    DeliverDevice(broadcast, VEXO_USB_REMOVED);
  }
}

LRESULT CALLBACK HandleMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case kUsbMonitorStopMessage:
      return 0;
    case WM_DEVICECHANGE: {
      const auto* const header = reinterpret_cast<const DEV_BROADCAST_HDR*>(lparam);
      if (header != nullptr && header->dbch_devicetype == DBT_DEVTYP_DEVICEINTERFACE) {
        ReactToInterface(wparam, *reinterpret_cast<const DEV_BROADCAST_DEVICEINTERFACE_A*>(header));
        return TRUE;  // Grants the request.
      }
      break;
    }
    case WM_DESTROY:
      // The window was closed by someone else, perhaps by the program on exit: the loop must not wait for its messages.
      PostQuitMessage(0);
      break;
    default:
      break;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

bool EnsureClass(HINSTANCE program) {
  WNDCLASSEXA present = {};
  present.cbSize = sizeof present;
  if (GetClassInfoExA(program, kClassName, &present) != 0) {
    return true;
  }
  WNDCLASSEXA description = {};
  description.cbSize = sizeof description;
  description.style = CS_HREDRAW | CS_VREDRAW | CS_OWNDC;
  description.lpfnWndProc = HandleMessage;
  description.hInstance = program;
  description.hIcon = LoadIconA(nullptr, IDI_APPLICATION);
  description.hIconSm = description.hIcon;
  description.hCursor = LoadCursorA(nullptr, IDC_ARROW);
  description.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
  description.lpszClassName = kClassName;
  return RegisterClassExA(&description) != 0;
}

void* RegisterForNotifications(HWND window) {
  DEV_BROADCAST_DEVICEINTERFACE_A filter = {};
  filter.dbcc_size = sizeof filter;
  filter.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
  filter.dbcc_classguid = kUsbPrinterInterface;
  return RegisterDeviceNotificationA(window, &filter,
                                     DEVICE_NOTIFY_WINDOW_HANDLE | DEVICE_NOTIFY_ALL_INTERFACE_CLASSES);
}

}  // namespace

UsbMonitorWindow::UsbMonitorWindow() {
  const HINSTANCE program = GetModuleHandleA(nullptr);
  if (!EnsureClass(program)) {
    return;
  }
  window_ = CreateWindowExA(WS_EX_APPWINDOW | WS_EX_CLIENTEDGE, kClassName, kTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                            0, 0, 0, nullptr, nullptr, program, nullptr);
  if (window_ != nullptr) {
    notification_ = RegisterForNotifications(window_);
  }
}

UsbMonitorWindow::~UsbMonitorWindow() {
  if (notification_ != nullptr) {
    UnregisterDeviceNotification(notification_);
  }
  if (window_ != nullptr) {
    DestroyWindow(window_);
  }
}

void UnregisterUsbMonitorClass() { UnregisterClassA(kClassName, GetModuleHandleA(nullptr)); }

}  // namespace vexo
