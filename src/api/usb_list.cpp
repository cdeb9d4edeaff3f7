#include "port/usb_enumeration.h"
#include "vexo/extend.h"

int32_t GetUsbDescList(char* buffer, int32_t size) {
  if (buffer == nullptr || size <= 0) {
    return VEXO_ERROR_PARAMETER;
  }
  return vexo::ListUsbPrinters(buffer, static_cast<size_t>(size));
}
