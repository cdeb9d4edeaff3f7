#include <cstdint>

#include "port/handle_port.h"
#include "port/port_object.h"
#include "vexo/extend.h"

namespace {

// Indexes into the table of device classes (port/windows/usb_enumeration.cpp).
constexpr uint32_t kDiskClass = 0;
constexpr uint32_t kFirstScannerGunClass = 1;
constexpr uint32_t kScannerGunClasses = 5;
constexpr uint32_t kImagingClass = 6;

int32_t OpenByClass(VexoPrinterHandle* handle, const char* descriptor, uint32_t device_class) {
  VexoPort* port = nullptr;
  const int32_t result = vexo::ReplaceHandlePort(handle, descriptor, &port);
  if (result != VEXO_OK) {
    return result;
  }
  return vexo::MarkHandleOpen(handle, port, vexo::OpenDeviceOfClass(port, device_class, 1));
}

}  // namespace

int32_t DiskPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  return OpenByClass(handle, descriptor, kDiskClass);
}

int32_t ScannerPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  return OpenByClass(handle, descriptor, kImagingClass);
}

int32_t ScannerGunPortOpen(VexoPrinterHandle* handle, const char* descriptor) {
  VexoPort* port = nullptr;
  const int32_t result = vexo::ReplaceHandlePort(handle, descriptor, &port);
  if (result != VEXO_OK) {
    return result;
  }
  switch (port->kind) {
    case VEXO_PORT_USB:
      return vexo::MarkHandleOpen(handle, port,
                                  vexo::OpenDeviceOfClass(port, kFirstScannerGunClass, kScannerGunClasses));
    case VEXO_PORT_SERIAL:
      return vexo::MarkHandleOpen(handle, port, port->Open(port));
    default:  // Compatibility: other kinds are marked open but not opened; hosts open the port object themselves.
      return vexo::MarkHandleOpen(handle, port, VEXO_OK);
  }
}
