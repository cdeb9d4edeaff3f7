// The message that the system sends to the windows of USB hot-plug monitors when a device arrives or is removed.
#ifndef VEXO_TOOLS_SIMULATORS_DEVICE_BROADCAST_H_
#define VEXO_TOOLS_SIMULATORS_DEVICE_BROADCAST_H_

#include <windows.h>

// After windows.h.
#include <dbt.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "simulators/registered_device.h"

namespace vexo::simulators {

inline constexpr char kMonitorClass[] = "USBMonitorClass";

// Hot-plug monitor windows of this process.
inline std::vector<HWND> MonitorWindows() {
  std::vector<HWND> windows;
  for (HWND window = nullptr; (window = FindWindowExA(nullptr, window, kMonitorClass, "USBMonitor")) != nullptr;) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == GetCurrentProcessId()) {
      windows.push_back(window);
    }
  }
  return windows;
}

// Returns when the window has processed the message.
inline void Broadcast(HWND window, WPARAM change, const std::string& path, const GUID& interface_class = kPrinterClass,
                      DWORD type = DBT_DEVTYP_DEVICEINTERFACE) {
  constexpr size_t kNameOffset = offsetof(DEV_BROADCAST_DEVICEINTERFACE_A, dbcc_name);
  std::vector<char> buffer(sizeof(DEV_BROADCAST_DEVICEINTERFACE_A) + path.size());
  DEV_BROADCAST_DEVICEINTERFACE_A fields = {};
  fields.dbcc_size = static_cast<DWORD>(buffer.size());
  fields.dbcc_devicetype = type;
  fields.dbcc_classguid = interface_class;
  std::memcpy(buffer.data(), &fields, kNameOffset);
  std::memcpy(buffer.data() + kNameOffset, path.c_str(), path.size() + 1);
  SendMessageA(window, WM_DEVICECHANGE, change, reinterpret_cast<LPARAM>(buffer.data()));
}

}  // namespace vexo::simulators

#endif  // VEXO_TOOLS_SIMULATORS_DEVICE_BROADCAST_H_
