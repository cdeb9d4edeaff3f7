// Port objects as hosts see them (VexoPort): the records, their twelve entries, and who owns what behind them.
#ifndef VEXO_PORT_PORT_OBJECT_H_
#define VEXO_PORT_PORT_OBJECT_H_

#include <cstdint>
#include <memory>

#include "port/port_driver.h"
#include "port/port_lock.h"
#include "vexo/printer.h"

namespace vexo {

// Makes a port object that owns `driver` and a share in the port lock. Its magic is set, so it is ready for use.
// Throws std::bad_alloc with nothing left behind.
VexoPort* MakePortObject(uint32_t kind, std::unique_ptr<PortDriver> driver, PortLockReference lock);

// Closes the device, then gives back what MakePortObject took; an object that somebody else made is closed through its
// own Close and nothing of it is freed. -6: null or wrong magic. -4: a Bluetooth port; it is closed, but its driver is
// deliberately not freed. 0 otherwise, whatever Close returned.
//
// A transfer that another thread has under way is aborted and ends; later operations on the stale record give -6
// (Bluetooth: -308).
int32_t ClosePort(VexoPort* port);

// Opens the device of a port object made here by device class; see PortDriver::OpenDeviceOfClass.
int32_t OpenDeviceOfClass(VexoPort* port, uint32_t first_class, uint32_t class_count);

}  // namespace vexo

#endif  // VEXO_PORT_PORT_OBJECT_H_
