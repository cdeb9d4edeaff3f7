// The host's callbacks for USB printers that come and go.
#ifndef VEXO_DISCOVERY_USB_CALLBACKS_H_
#define VEXO_DISCOVERY_USB_CALLBACKS_H_

#include <cstdint>

#include "platform/callback_registry.h"
#include "vexo/extend.h"

namespace vexo {

using UsbCallbackRegistry = platform::CallbackRegistry<USBMonitorCallback>;

// Those of the process.
UsbCallbackRegistry& UsbCallbacks();

// Tells them of a device, by the name that hosts know it by. On the calling thread.
void DeliverUsbEvent(const char* device, int32_t event);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_USB_CALLBACKS_H_
