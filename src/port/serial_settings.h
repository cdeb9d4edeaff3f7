// The line settings of a serial port: parsed from its device URI, in the system's codes.
#ifndef VEXO_PORT_SERIAL_SETTINGS_H_
#define VEXO_PORT_SERIAL_SETTINGS_H_

#include <cstdint>

#include "port/device_uri.h"

namespace vexo {

// Flow control bits.
inline constexpr uint32_t kFlowDtrDsr = 1;
inline constexpr uint32_t kFlowRtsCts = 2;
inline constexpr uint32_t kFlowXonXoff = 16;

// The first three hold the codes of the system's DCB record.
struct SerialSettings {
  uint8_t parity = 0;
  uint8_t byte_size = 0;
  uint8_t stop_bits = 0;
  uint32_t baud_rate = 0;  // Bits per second.
  uint32_t flow_control = 0;
};

// Reads the settings from a URI. A missing parameter counts as an invalid value. Writes *settings on success only.
// Returns VEXO_OK, VEXO_ERROR_SERIAL_BAUDRATE or VEXO_ERROR_SERIAL_FLOW_CONTROL.
//
// Compatibility: an invalid parity, byte size or number of stop bits is not an error here; the port can be configured,
// but not opened.
int32_t ReadSerialSettings(const DeviceUri& uri, SerialSettings* settings);

// Returns the write constant, in milliseconds, that gives a slow line the time for a whole chunk.
//
// Compatibility: the division by the speed is an integer division; hosts are tuned to the resulting times.
uint32_t SerialWriteConstant(uint32_t chunk_size, uint32_t baud_rate);

}  // namespace vexo

#endif  // VEXO_PORT_SERIAL_SETTINGS_H_
