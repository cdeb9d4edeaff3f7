#include "port/windows/usb_port.h"

#include <cstring>
#include <initializer_list>

#include "port/bounded_text.h"
#include "port/usb_enumeration.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// A printer may answer a short request with a full packet, and the system fails a read that is smaller than the packet.
constexpr uint32_t kReadPacketSize = 255;
constexpr uint32_t kReadAvailablePacketSize = 64;
static_assert(kReadPacketSize <= kLargestPacketSize && kReadAvailablePacketSize <= kLargestPacketSize);

bool HasText(const char* value) { return value != nullptr && *value != '\0'; }

}  // namespace

// No value can be too long for its field: the whole URI is not longer.
int32_t UsbPort::Configure(const char* uri) {
  DeviceUri parsed;
  const int32_t result = ParseDeviceUri(&parsed, uri);
  if (result != VEXO_OK) {
    return result;
  }
  match_by_name_ = true;
  for (char* text : {device_name_, location_, portnum_, vid_, pid_}) {
    std::memset(text, 0, kUriBufferSize);
  }
  const char* const location = FindUriParameter(parsed, "location");
  const char* const portnum = FindUriParameter(parsed, "portnum");
  if (HasText(location)) {
    CopyText(location_, sizeof(location_), location);
    match_by_name_ = false;
  } else if (HasText(portnum)) {
    CopyText(portnum_, sizeof(portnum_), portnum);
    match_by_name_ = false;
  }
  const char* const vid = FindUriParameter(parsed, "vid");
  const char* const pid = FindUriParameter(parsed, "pid");
  if (HasText(vid) && HasText(pid)) {
    CopyText(vid_, sizeof(vid_), vid);
    CopyText(pid_, sizeof(pid_), pid);
    match_by_name_ = false;
  }
  if (std::strcmp(parsed.device, "DEVICE") != 0) {
    CopyText(device_name_, sizeof(device_name_), parsed.device);
    match_by_name_ = false;
  }
  SetConfigured(parsed);
  configured_length_ = LengthWithoutFoundDevice(UsbPort::uri());
  return VEXO_OK;
}

UsbCriteria UsbPort::Criteria() const { return {match_by_name_, device_name_, location_, portnum_, vid_, pid_}; }

void UsbPort::Adopt(const FoundUsbDevice& found) {
  CopyText(device_path_, sizeof(device_path_), found.path);
  CopyText(location_, sizeof(location_), found.location);
  read_gated_ = found.gated ? 1 : 0;
  WriteFoundDevice(UsbPort::uri(), configured_length_, found);
}

int32_t UsbPort::ResolveDevicePath() {
  read_gated_ = 0;
  FoundUsbDevice found;
  const int32_t result = ResolveUsbDevicePath(Criteria(), &found);
  if (result == VEXO_OK) {
    Adopt(found);
  }
  return result;
}

int32_t UsbPort::OpenDeviceOfClass(uint32_t first_class, uint32_t class_count) {
  const int32_t check = CheckClosed();
  if (check != VEXO_OK) {
    return check;
  }
  read_gated_ = 0;
  FoundUsbDevice found;
  const int32_t result = FindUsbDeviceOfClass(Criteria(), first_class, class_count, &found);
  if (result != VEXO_OK) {
    return result;
  }
  if (found.path[0] != '\0') {
    Adopt(found);
  }
  return OpenDeviceFile();
}

int32_t UsbPort::Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  return ReadIsRefused() ? VEXO_ERROR_NOT_IMPLEMENTED : FilePort::Read(buffer, offset, length, read);
}

int32_t UsbPort::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  return ReadIsRefused() ? VEXO_ERROR_NOT_IMPLEMENTED : FilePort::ReadAvailable(buffer, from, to, read);
}

int32_t UsbPort::Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output,
                         uint32_t output_length, uint32_t* returned) {
  switch (code) {
    case VEXO_CONTROL_USB_GET_READ_GATED:
      return GetFlag(read_gated_, output, output_length, returned);
    case VEXO_CONTROL_USB_SET_READ_ENABLED:
      return SetFlag(input, input_length, &read_enabled_);
    case VEXO_CONTROL_USB_GET_READ_ENABLED:
      return GetFlag(read_enabled_, output, output_length, returned);
    default:
      return VEXO_ERROR_NOT_IMPLEMENTED;
  }
}

uint32_t UsbPort::ReadPacketSize(uint32_t length) const { return length < kReadPacketSize ? kReadPacketSize : 0; }

uint32_t UsbPort::ReadAvailablePacketSize(uint32_t length) const {
  return length < kReadAvailablePacketSize ? kReadAvailablePacketSize : 0;
}

}  // namespace vexo
