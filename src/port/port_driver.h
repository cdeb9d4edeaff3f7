// The interface of a port driver (the operations of a port object without their common checks) and the table that maps
// kinds of ports to drivers.
#ifndef VEXO_PORT_PORT_DRIVER_H_
#define VEXO_PORT_PORT_DRIVER_H_

#include <cstdint>
#include <memory>

#include "vexo/printer.h"

namespace vexo {

// Operations in the order of the port object's table; see printer.h. The port object has checked pointers and zeroed
// the counts. The base implementations return VEXO_OK. Drivers do not throw.
class PortDriver {
 public:
  PortDriver() = default;
  PortDriver(const PortDriver&) = delete;
  PortDriver& operator=(const PortDriver&) = delete;
  virtual ~PortDriver() = default;

  virtual int32_t Configure(const char* uri);
  virtual int32_t GetUri(char* buffer, uint32_t size, uint32_t* length);
  virtual int32_t Open();
  virtual int32_t Close();
  virtual int32_t Abort();
  virtual int32_t CheckOpen();
  virtual int32_t SetTimeouts(const VexoPortTimeouts& timeouts);
  virtual int32_t GetTimeouts(VexoPortTimeouts* timeouts);
  virtual int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) = 0;
  virtual int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) = 0;
  virtual int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) = 0;
  virtual int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output,
                          uint32_t output_length, uint32_t* returned);

  // Finds a USB device among `class_count` device classes from `first_class` on and opens its device file. Returns
  // VEXO_ERROR_USB_NOT_FOUND when there is none, as on every port without a device file.
  virtual int32_t OpenDeviceOfClass(uint32_t first_class, uint32_t class_count);
};

// Implements GetUri for all drivers.
//
// Compatibility: the copy needs 255 bytes; a smaller buffer is cleared. The length is returned in either case.
int32_t CopyUri(const char* uri, char* buffer, uint32_t size, uint32_t* length);

// Returns a new driver for a kind of port, or null when out of memory. *known tells whether the kind has a driver at
// all. The Windows build and the tests each define this function.
std::unique_ptr<PortDriver> MakePortDriver(int32_t kind, bool* known);

}  // namespace vexo

#endif  // VEXO_PORT_PORT_DRIVER_H_
