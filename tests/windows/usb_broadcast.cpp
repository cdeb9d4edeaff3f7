// usb_broadcast arrived|removed PATH: tells every USB hot-plug monitor that runs on this machine of a printer, as the
// system does. Waits until there is a monitor, for a minute at most.
#include <windows.h>

// After windows.h.
#include <dbt.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr char kClass[] = "USBMonitorClass";
constexpr GUID kPrinter = {0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};
constexpr std::chrono::minutes kPatience(1);

bool AwaitMonitor() {
  const auto patience_ends = std::chrono::steady_clock::now() + kPatience;
  while (FindWindowA(kClass, nullptr) == nullptr) {
    if (std::chrono::steady_clock::now() > patience_ends) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

void Broadcast(WPARAM change, const std::string& path) {
  constexpr size_t kNameOffset = offsetof(DEV_BROADCAST_DEVICEINTERFACE_A, dbcc_name);
  std::vector<char> buffer(sizeof(DEV_BROADCAST_DEVICEINTERFACE_A) + path.size());
  DEV_BROADCAST_DEVICEINTERFACE_A fields = {};
  fields.dbcc_size = static_cast<DWORD>(buffer.size());
  fields.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
  fields.dbcc_classguid = kPrinter;
  std::memcpy(buffer.data(), &fields, kNameOffset);
  std::memcpy(buffer.data() + kNameOffset, path.c_str(), path.size() + 1);
  for (HWND window = nullptr; (window = FindWindowExA(nullptr, window, kClass, nullptr)) != nullptr;) {
    SendMessageA(window, WM_DEVICECHANGE, change, reinterpret_cast<LPARAM>(buffer.data()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: usb_broadcast arrived|removed PATH\n");
    return 2;
  }
  if (!AwaitMonitor()) {
    std::fprintf(stderr, "no USB hot-plug monitor runs\n");
    return 1;
  }
  Broadcast(std::strcmp(argv[1], "removed") == 0 ? DBT_DEVICEREMOVECOMPLETE : DBT_DEVICEARRIVAL, argv[2]);
  return 0;
}
