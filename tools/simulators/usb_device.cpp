// usb_device SERIAL [PIPE]: plugs in a USB printer of the maker's with this serial number, whose device file is the
// named pipe, and pulls it out when its input ends. For tests that run vexoctl as a process of its own.
#include <iostream>
#include <optional>
#include <string>

#include "simulators/registered_device.h"

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: usb_device SERIAL [PIPE]\n";
    return 2;
  }
  const std::string serial = argv[1];
  const vexo::simulators::RegisteredDevice device({"USB\\VID_1A2B&PID_0001\\" + serial,
                                                   "USB\\VID_1A2B&PID_0001&REV_0100", "Port_#0001.Hub_#0002",
                                                   L"USBPRINT\\MODEL\\7&1A2B3C&0&USB001"});
  std::optional<vexo::simulators::DeviceLink> link;
  if (argc == 3) {
    link.emplace(device.path(), argv[2]);
  }
  std::cout << "plugged in" << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
  }
  return 0;
}
