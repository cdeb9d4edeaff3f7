#ifndef VEXOCTL_USB_PRINTERS_H_
#define VEXOCTL_USB_PRINTERS_H_

#include <string>
#include <vector>

namespace vexoctl {

// A USB printer that is connected now, as the library describes it; all in UTF-8, empty where nothing is known.
struct UsbPrinter {
  std::string serial;
  std::string name;
  std::string ids;  // "VID_1A2B&PID_0001".
  std::string port;
  std::string location;

  // What to give as -p for this printer; empty when nothing tells it from others.
  std::string Descriptor() const;
};

// Throws a Failure.
std::vector<UsbPrinter> ListUsbPrinters();

}  // namespace vexoctl

#endif  // VEXOCTL_USB_PRINTERS_H_
