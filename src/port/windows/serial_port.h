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

  // Takes the line settings from the URI: -351, -356, see ReadSerialSettings.
  int32_t Configure(const char* uri) override;

  // Also sets up the line: -312 its settings cannot be read, -313 they are refused. The port is closed then.
  int32_t Open() override;

  // The write constant is the caller's from now on; until then it follows from the speed of the line.
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;

 protected:
  int32_t SetUpDevice(HANDLE device) override;

  // Puts the settings into what the system says of the line, and leaves the rest of it.
  void FillLine(DCB* line) const;

 private:
  int32_t SetUpLine(HANDLE device) const;
  int32_t SetUpTimeouts(HANDLE device) const;

  SerialSettings settings_;
  bool auto_write_timeout_ = true;
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_SERIAL_PORT_H_
