#include "vexoctl/usb_printers.h"

#include <string>
#include <system_error>

#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {

std::vector<vexo::UsbPrinter> ListUsbPrinters() {
  std::error_code error;
  std::vector<vexo::UsbPrinter> printers = vexo::ListUsbPrinters(&error);
  Require(error.value(), "cannot list the USB printers");
  for (vexo::UsbPrinter& printer : printers) {
    for (std::string* const text : {&printer.serial, &printer.name, &printer.ids, &printer.port, &printer.location}) {
      *text = Utf8FromAnsi(*text);
    }
  }
  return printers;
}

}  // namespace vexoctl
