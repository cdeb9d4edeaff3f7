#include "port/port_factory.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "port/bounded_text.h"
#include "port/descriptor.h"
#include "port/device_uri.h"
#include "port/port_driver.h"
#include "port/port_lock.h"
#include "port/port_object.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr size_t kMinTextLength = 3;

// A text that parses as a URI is used as it is, even if it would also parse as a descriptor.
int32_t ParseUriOrDescriptor(DeviceUri* uri, const char* text) {
  char copy[kUriBufferSize];
  CopyText(copy, sizeof(copy), text);
  if (std::strlen(copy) < kMinTextLength) {
    return VEXO_ERROR_IO_SETTING;
  }
  if (ParseDeviceUri(uri, copy) == VEXO_OK) {
    return VEXO_OK;
  }
  char converted[kUriBufferSize];
  if (ConvertDescriptorToUri(copy, converted) != VEXO_OK || ParseDeviceUri(uri, converted) != VEXO_OK) {
    return VEXO_ERROR_IO_SETTING;
  }
  return VEXO_OK;
}

int32_t MakePort(VexoPort** port, int32_t kind, const char* uri, PortLockReference lock) {
  const int32_t out_of_memory = kind == VEXO_PORT_BUFFER ? VEXO_ERROR_OUT_OF_MEMORY : VEXO_ERROR_BUFFER_TOO_SMALL;
  bool known = false;
  std::unique_ptr<PortDriver> driver = MakePortDriver(kind, &known);
  if (!known) {
    return VEXO_ERROR_NOT_SUPPORTED_PRINTER;
  }
  if (driver == nullptr) {
    return out_of_memory;
  }
  const int32_t result = driver->Configure(uri);
  if (result != VEXO_OK) {
    return result;
  }
  try {
    *port = MakePortObject(static_cast<uint32_t>(kind), std::move(driver), std::move(lock));
  } catch (const std::bad_alloc&) {
    return out_of_memory;
  }
  return VEXO_OK;
}

}  // namespace

int32_t OpenPort(VexoPort** port, const char* text) {
  PortLockReference lock;
  const int32_t lock_error = lock.Take();
  if (lock_error != 0) {
    return lock_error;
  }
  if (text == nullptr) {
    return VEXO_ERROR_IO_SETTING;
  }
  DeviceUri uri;
  const int32_t parse_error = ParseUriOrDescriptor(&uri, text);
  if (parse_error != VEXO_OK) {
    return parse_error;
  }
  const int32_t kind = SelectPortKind(uri.type);
  if (kind < 0) {
    return kind;
  }
  char canonical[kUriBufferSize];
  FormatDeviceUri(uri, canonical, sizeof(canonical));  // Always fits: the URI came from a buffer of this size.
  return MakePort(port, kind, canonical, std::move(lock));
}

}  // namespace vexo
