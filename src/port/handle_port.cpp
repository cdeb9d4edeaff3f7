#include "port/handle_port.h"

#include <mutex>

#include "platform/mutex.h"
#include "port/port_factory.h"
#include "port/port_object.h"
#include "port/shared_field.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// Held while the two fields of a handle are changed together, never while a port is in use.
platform::Mutex g_handles;

// Returns the port that the handle held.
VexoPort* Exchange(VexoPrinterHandle* handle, VexoPort* port) {
  const std::lock_guard<platform::Mutex> guard(g_handles);
  VexoPort* const old_port = LoadField(handle->port);
  StoreField<uint8_t>(&handle->portOpen, 0);
  StoreField(&handle->port, port);
  return old_port;
}

// Ignores the result of closing, which must not keep a host from opening the next port.
void ReplaceWith(VexoPrinterHandle* handle, VexoPort* port) {
  VexoPort* const old_port = Exchange(handle, port);
  if (old_port != nullptr) {
    ClosePort(old_port);
  }
}

}  // namespace

// Detaches the old object from the handle before closing it, so that another thread that still uses the handle finds it
// closed instead of half destroyed.
int32_t ReplaceHandlePort(VexoPrinterHandle* handle, const char* descriptor, VexoPort** port) {
  if (handle == nullptr || LoadField(handle->magic) != VEXO_PRINTER_MAGIC) {
    return VEXO_ERROR_HANDLE;
  }
  ReplaceWith(handle, nullptr);
  VexoPort* made = nullptr;
  const int32_t result = OpenPort(&made, descriptor);
  if (result == VEXO_OK) {
    ReplaceWith(handle, made);
    *port = made;
  }
  return result;
}

int32_t MarkHandleOpen(VexoPrinterHandle* handle, const VexoPort* port, int32_t result) {
  const std::lock_guard<platform::Mutex> guard(g_handles);
  if (result == VEXO_OK && LoadField(handle->port) == port) {
    StoreField<uint8_t>(&handle->portOpen, 1);
  }
  return result;
}

int32_t ReconnectHandle(VexoPrinterHandle* handle, const char* descriptor) {
  VexoPort* port = nullptr;
  const int32_t result = ReplaceHandlePort(handle, descriptor, &port);
  return result == VEXO_OK ? MarkHandleOpen(handle, port, port->Open(port)) : result;
}

}  // namespace vexo
