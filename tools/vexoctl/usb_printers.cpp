#include "vexoctl/usb_printers.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "vexo/extend.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

constexpr size_t kRecordSize = 256;
constexpr size_t kMostPrinters = 256;

// A blank stands for what the system does not tell.
std::string Field(std::string_view text) { return text == " " ? "" : Utf8FromAnsi(text); }

std::string_view TakeUntil(char separator, std::string_view* text) {
  const std::string_view taken = text->substr(0, text->find(separator));
  text->remove_prefix(std::min(taken.size() + 1, text->size()));
  return taken;
}

// "USB,<serial>;<serial>;<name>;<ids>;<port>;<location>"
UsbPrinter ParseRecord(std::string_view record) {
  TakeUntil(';', &record);
  UsbPrinter printer;
  for (std::string* const field : {&printer.serial, &printer.name, &printer.ids, &printer.port}) {
    *field = Field(TakeUntil(';', &record));
  }
  printer.location = Field(record);
  return printer;
}

}  // namespace

std::string UsbPrinter::Descriptor() const {
  if (!serial.empty()) {
    return "vexo:/dev/bus/USB/" + serial;
  }
  if (!port.empty()) {
    return "USB," + port;
  }
  return "";
}

std::vector<UsbPrinter> ListUsbPrinters() {
  std::vector<char> list(kMostPrinters * kRecordSize);
  Require(GetUsbDescList(list.data(), static_cast<int32_t>(list.size())), "cannot list the USB printers");
  std::vector<UsbPrinter> printers;
  for (std::string_view rest(list.data()); !rest.empty();) {
    printers.push_back(ParseRecord(TakeUntil('|', &rest)));
  }
  return printers;
}

}  // namespace vexoctl
