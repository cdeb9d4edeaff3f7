#include "session/port_parameter.h"

#include <cstring>

#include "port/device_uri.h"
#include "protocol/checked_printer.h"
#include "vexo/error.h"

namespace vexo {

int32_t GetPortUriParameter(VexoPrinterHandle* handle, const char* key, char* out, int32_t size) {
  const CheckedPrinter printer(handle);
  const int32_t check = printer.Check();
  if (check != VEXO_OK) {
    return check;
  }
  char text[kUriBufferSize] = {};
  printer.GetUri(text, sizeof(text));  // A missing URI fails in the parser.
  text[sizeof(text) - 1] = '\0';       // A host's port object may have filled it completely.
  DeviceUri uri;
  const int32_t parsed = ParseDeviceUri(&uri, text);
  if (parsed != VEXO_OK) {
    return parsed;
  }
  const char* const value = FindUriParameter(uri, key);
  if (value == nullptr) {
    return VEXO_OK;
  }
  const size_t length = std::strlen(value) + 1;
  if (size < 0 || length > static_cast<size_t>(size)) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  std::memcpy(out, value, length);
  return VEXO_OK;
}

}  // namespace vexo
