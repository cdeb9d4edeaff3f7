// The serial port ("COM3,9600"): a communications device with its line settings.
#ifndef VEXO_PORT_WINDOWS_SERIAL_PORT_H_
#define VEXO_PORT_WINDOWS_SERIAL_PORT_H_

#include <cstdint>

#include "port/serial_settings.h"
#include "port/windows/file_port.h"

namespace vexo {

class SerialPort : public FilePort {
 public:
  SerialPort() : FilePort(Mode::kOverlapped) {}

  // Reads the line settings from the URI; see ReadSerialSettings for the codes.
  int32_t Configure(const char* uri) override;

  // Also sets up the line. Returns VEXO_ERROR_IO_GET_ATTRIBUTES when its settings cannot be read,
  // VEXO_ERROR_IO_SET_ATTRIBUTES when they are refused; the port is then closed.
  int32_t Open() override;

  // Compatibility: from this call on the write constant is the caller's; before, it is derived from the speed of the
  // line.
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;

 protected:
  int32_t SetUpDevice(HANDLE device) override;

  // Writes the settings into the line state read from the system and leaves its other fields unchanged.
  void FillLine(DCB* line) const;

 private:
  int32_t SetUpLine(HANDLE device) const;
  int32_t SetUpTimeouts(HANDLE device) const;

  SerialSettings settings_;
  bool auto_write_timeout_ = true;
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_SERIAL_PORT_H_
