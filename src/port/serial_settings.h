// The line settings of a serial port, as its device URI spells them and as the system takes them.
#ifndef VEXO_PORT_SERIAL_SETTINGS_H_
#define VEXO_PORT_SERIAL_SETTINGS_H_

#include <cstdint>

#include "port/device_uri.h"

namespace vexo {

// Handshakes of a line, as bits.
inline constexpr uint32_t kFlowDtrDsr = 1;
inline constexpr uint32_t kFlowRtsCts = 2;
inline constexpr uint32_t kFlowXonXoff = 16;

// The codes of the first three are those of the system's DCB record. A text that is not accepted leaves a value that no
// system takes: the port can be configured, but not opened.
struct SerialSettings {
  uint8_t parity = 0;
  uint8_t byte_size = 0;
  uint8_t stop_bits = 0;
  uint32_t baud_rate = 0;  // Bits per second.
  uint32_t flow_control = 0;
};

// Takes the settings from a URI. A missing parameter counts as a text that is not accepted. 0; -351: not one of the
// supported speeds; -356: bad flow control. *settings is written on success only.
int32_t ReadSerialSettings(const DeviceUri& uri, SerialSettings* settings);

// The write constant, in milliseconds, with which a slow line has the time for a whole chunk.
uint32_t SerialWriteConstant(uint32_t chunk_size, uint32_t baud_rate);

}  // namespace vexo

#endif  // VEXO_PORT_SERIAL_SETTINGS_H_
