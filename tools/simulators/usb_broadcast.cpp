// usb_broadcast arrived|removed PATH: tells every USB hot-plug monitor that runs on this machine of a printer, as the
// system does. Waits until there is a monitor.
#include <cstdio>

#include "simulators/device_broadcast.h"

int main(int argc, char** argv) {
  using vexo::simulators::kMonitorClass;
  constexpr DWORD kStepMs = 10;
  constexpr DWORD kLongestWaitMs = 20'000;
  if (argc != 3) {
    std::fprintf(stderr, "usage: usb_broadcast arrived|removed PATH\n");
    return 2;
  }
  for (DWORD waited = 0; FindWindowA(kMonitorClass, nullptr) == nullptr; waited += kStepMs) {
    if (waited >= kLongestWaitMs) {
      std::fprintf(stderr, "no USB hot-plug monitor runs\n");
      return 1;
    }
    Sleep(kStepMs);
  }
  const WPARAM change = std::strcmp(argv[1], "removed") == 0 ? DBT_DEVICEREMOVECOMPLETE : DBT_DEVICEARRIVAL;
  for (HWND window = nullptr; (window = FindWindowExA(nullptr, window, kMonitorClass, nullptr)) != nullptr;) {
    vexo::simulators::Broadcast(window, change, argv[2]);
  }
  return 0;
}
