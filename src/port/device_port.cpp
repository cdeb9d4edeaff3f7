#include "port/device_port.h"

#include "vexo/error.h"

namespace vexo {

void DevicePort::SetConfigured(const DeviceUri& uri) {
  FormatDeviceUri(uri, uri_, sizeof(uri_));
  configured_ = true;
}

int32_t DevicePort::GetUri(char* buffer, uint32_t size, uint32_t* length) {
  return CopyUri(configured_ ? uri_ : "", buffer, size, length);
}

int32_t DevicePort::SetTimeouts(const VexoPortTimeouts& timeouts) {
  timeouts_ = timeouts;
  return VEXO_OK;
}

int32_t DevicePort::GetTimeouts(VexoPortTimeouts* timeouts) {
  *timeouts = timeouts_;
  return VEXO_OK;
}

int32_t DevicePort::Control(int32_t /*code*/, const uint8_t* /*input*/, uint32_t /*input_length*/, uint8_t* /*output*/,
                            uint32_t /*output_length*/, uint32_t* /*returned*/) {
  return VEXO_ERROR_NOT_IMPLEMENTED;
}

}  // namespace vexo
