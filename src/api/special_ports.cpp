#include <cstdint>

#include "port/port_factory.h"
#include "port/port_object.h"
#include "port/shared_field.h"
#include "vexo/extend.h"

namespace {

// Device classes in the order in which the system's interfaces are searched.
constexpr uint32_t kDiskClass = 0;
constexpr uint32_t kFirstScannerGunClass = 1;
constexpr uint32_t kScannerGunClasses = 5;
constexpr uint32_t kImagingClass = 6;

// Puts a new port object into the handle in place of the one it may hold. The handle lets go of the old object before
// that is closed, so that another thread which still uses the handle finds it closed and not half torn down. Whatever
// closing reports must not keep a host from opening the next port.
int32_t ReplacePort(VexoPrinterHandle* handle, const char* descriptor) {
  if (handle == nullptr || handle->magic != VEXO_PRINTER_MAGIC) {
    return VEXO_ERROR_HANDLE;
  }
  VexoPort* const old_port = handle->port;
  vexo::StoreField<uint8_t>(&handle->portOpen, 0);
  vexo::StoreField<VexoPort*>(&handle->port, nullptr);
  if (old_port != nullptr) {
    vexo::ClosePort(old_port);
  }
  VexoPort* port = nullptr;
  const int32_t result = vexo::OpenPort(&port, descriptor);
  vexo::StoreField(&handle->port, port);
  return result;
}

int32_t MarkOpen(VexoPrinterHandle* handle, int32_t result) {
  if (result == VEXO_OK) {
    vexo::StoreField<uint8_t>(&handle->portOpen, 1);
  }
  return result;
}

int32_t OpenByClass(VexoPrinterHandle* handle, const char* descriptor, uint32_t device_class) {
  const int32_t result = ReplacePort(handle, descriptor);
  if (result != VEXO_OK) {
    return result;
  }
  return MarkOpen(handle, vexo::OpenDeviceOfClass(handle->port, device_class, 1));
}

}  // namespace

int32_t DiskPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  return OpenByClass(handle, descriptor, kDiskClass);
}

int32_t ScannerPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  return OpenByClass(handle, descriptor, kImagingClass);
}

int32_t ScannerGunPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  const int32_t result = ReplacePort(handle, descriptor);
  if (result != VEXO_OK) {
    return result;
  }
  VexoPort* const port = handle->port;
  switch (port->kind) {
    case VEXO_PORT_USB:
      return MarkOpen(handle, vexo::OpenDeviceOfClass(port, kFirstScannerGunClass, kScannerGunClasses));
    case VEXO_PORT_SERIAL:
      return MarkOpen(handle, port->Open(port));
    default:
      return MarkOpen(handle, VEXO_OK);  // Its user opens it: a printer's own connection is not to be taken here.
  }
}
