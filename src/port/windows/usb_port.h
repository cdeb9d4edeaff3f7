// The USB printer-class port: a device file with overlapped I/O that transfers whole packets.
#ifndef VEXO_PORT_WINDOWS_USB_PORT_H_
#define VEXO_PORT_WINDOWS_USB_PORT_H_

#include <cstdint>

#include "port/usb_selection.h"
#include "port/usb_uri.h"
#include "port/windows/file_port.h"

namespace vexo {

class UsbPort : public FilePort {
 public:
  UsbPort() : FilePort(Mode::kOverlapped) {}

  int32_t Configure(const char* uri) override;

  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;
  int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output, uint32_t output_length,
                  uint32_t* returned) override;
  int32_t OpenDeviceOfClass(uint32_t first_class, uint32_t class_count) override;

 protected:
  // Finds the printer that the URI describes; returns the result of ResolveUsbDevicePath.
  int32_t ResolveDevicePath() override;

  uint32_t ReadPacketSize(uint32_t length) const override;
  uint32_t ReadAvailablePacketSize(uint32_t length) const override;

  // Compatibility: 1 for a printer that must not be read while its reads are switched off
  // (VEXO_CONTROL_USB_SET_READ_ENABLED).
  uint8_t read_gated_ = 0;

 private:
  UsbCriteria Criteria() const;

  // Stores where the device was found and adds it to the URI.
  void Adopt(const FoundUsbDevice& found);

  bool ReadIsRefused() const { return read_gated_ == 1 && read_enabled_ == 0; }

  uint8_t read_enabled_ = 1;

  // The criteria of the URI. match_by_name_ means that there are none and the first printer found is taken, even after
  // location_ has been set to that of an earlier one.
  bool match_by_name_ = true;
  char device_name_[kUriBufferSize] = {};
  char location_[kUriBufferSize] = {};
  char portnum_[kUriBufferSize] = {};
  char vid_[kUriBufferSize] = {};
  char pid_[kUriBufferSize] = {};

  size_t configured_length_ = 0;  // Length of the URI without the parameters added on opening.
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_USB_PORT_H_
