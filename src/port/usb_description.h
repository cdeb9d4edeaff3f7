// The list of USB printers as one text: "USB,serial;serial;name;ids;port;location|USB,...".
#ifndef VEXO_PORT_USB_DESCRIPTION_H_
#define VEXO_PORT_USB_DESCRIPTION_H_

#include <cstddef>

#include "port/usb_selection.h"

namespace vexo {

// Maximum length of a record, including its "|".
inline constexpr size_t kMaxUsbRecordLength = 255;

// Writes records into the caller's buffer.
class UsbDescriptionList {
 public:
  // Zeroes the buffer. `size` must be at least 1.
  UsbDescriptionList(char* buffer, size_t size);

  // Compatibility: silently drops a record that does not fit; a shorter one may still follow.
  void Add(const UsbDevice& printer);

  // Removes the "|" at the end of the list.
  void Finish();

 private:
  char* const buffer_;
  const size_t size_;
  size_t used_ = 0;
};

}  // namespace vexo

#endif  // VEXO_PORT_USB_DESCRIPTION_H_
