#include "port/handle_port.h"

#include "port/port_factory.h"
#include "port/port_object.h"
#include "port/shared_field.h"
#include "vexo/error.h"

namespace vexo {

// The handle lets go of the old object before that is closed, so that another thread which still uses the handle finds
// it closed and not half torn down. Whatever closing reports must not keep a host from opening the next port.
int32_t ReplaceHandlePort(VexoPrinterHandle* handle, const char* descriptor) {
  if (handle == nullptr || handle->magic != VEXO_PRINTER_MAGIC) {
    return VEXO_ERROR_HANDLE;
  }
  VexoPort* const old_port = handle->port;
  StoreField<uint8_t>(&handle->portOpen, 0);
  StoreField<VexoPort*>(&handle->port, nullptr);
  if (old_port != nullptr) {
    ClosePort(old_port);
  }
  VexoPort* port = nullptr;
  const int32_t result = OpenPort(&port, descriptor);
  StoreField(&handle->port, port);
  return result;
}

int32_t MarkHandleOpen(VexoPrinterHandle* handle, int32_t result) {
  if (result == VEXO_OK) {
    StoreField<uint8_t>(&handle->portOpen, 1);
  }
  return result;
}

int32_t ReconnectHandle(VexoPrinterHandle* handle, const char* descriptor) {
  const int32_t result = ReplaceHandlePort(handle, descriptor);
  if (result != VEXO_OK) {
    return result;
  }
  return MarkHandleOpen(handle, handle->port->Open(handle->port));
}

}  // namespace vexo
