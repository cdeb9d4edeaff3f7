#include "port/port_driver.h"

#include <cstring>

#include "port/bounded_text.h"
#include "port/device_uri.h"
#include "vexo/error.h"

namespace vexo {

int32_t PortDriver::Configure(const char* /*uri*/) { return VEXO_OK; }

int32_t PortDriver::GetUri(char* buffer, uint32_t size, uint32_t* length) { return CopyUri("", buffer, size, length); }

int32_t PortDriver::Open() { return VEXO_OK; }
int32_t PortDriver::Close() { return VEXO_OK; }
int32_t PortDriver::Abort() { return VEXO_OK; }
int32_t PortDriver::CheckOpen() { return VEXO_OK; }
int32_t PortDriver::SetTimeouts(const VexoPortTimeouts& /*timeouts*/) { return VEXO_OK; }

int32_t PortDriver::GetTimeouts(VexoPortTimeouts* timeouts) {
  *timeouts = {};
  return VEXO_OK;
}

int32_t PortDriver::Control(int32_t /*code*/, const uint8_t* /*input*/, uint32_t /*input_length*/, uint8_t* /*output*/,
                            uint32_t /*output_length*/, uint32_t* /*returned*/) {
  return VEXO_OK;
}

int32_t PortDriver::OpenDeviceOfClass(uint32_t /*first_class*/, uint32_t /*class_count*/) {
  return VEXO_ERROR_USB_NOT_FOUND;
}

int32_t CopyUri(const char* uri, char* buffer, uint32_t size, uint32_t* length) {
  *length = static_cast<uint32_t>(std::strlen(uri));
  if (buffer == nullptr || size == 0) {
    return VEXO_OK;
  }
  if (size < kMaxUriLength) {
    std::memset(buffer, 0, size);
  } else {
    CopyText(buffer, size, uri);
  }
  return VEXO_OK;
}

}  // namespace vexo
