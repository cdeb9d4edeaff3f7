// Port objects as hosts see them (VexoPort): the records and their twelve entries.
#ifndef VEXO_PORT_PORT_OBJECT_H_
#define VEXO_PORT_PORT_OBJECT_H_

#include <cstdint>
#include <memory>

#include "port/port_driver.h"
#include "port/port_lock.h"
#include "vexo/printer.h"

namespace vexo {

// Makes a port object that owns `driver` and a reference to the port lock. Its magic is set, so it is ready for use.
// Throws std::bad_alloc, leaving nothing behind.
VexoPort* MakePortObject(uint32_t kind, std::unique_ptr<PortDriver> driver, PortLockReference lock);

// Closes the device and frees what MakePortObject allocated. An object made by someone else is closed through its own
// Close and not freed. Returns VEXO_ERROR_HANDLE for null or a wrong magic, otherwise VEXO_OK whatever Close returned.
//
// A transfer under way on another thread is aborted; later operations on the stale record return VEXO_ERROR_HANDLE
// (Bluetooth: VEXO_ERROR_IO_HANDLE).
//
// Compatibility: a Bluetooth port is closed, but its driver is leaked and the result is
// VEXO_ERROR_NOT_SUPPORTED_PRINTER.
int32_t ClosePort(VexoPort* port);

// Opens the device of a port object made here; see PortDriver::OpenDeviceOfClass.
int32_t OpenDeviceOfClass(VexoPort* port, uint32_t first_class, uint32_t class_count);

}  // namespace vexo

#endif  // VEXO_PORT_PORT_OBJECT_H_
