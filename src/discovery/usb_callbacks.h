// The host's callbacks for USB printers being plugged in and removed.
#ifndef VEXO_DISCOVERY_USB_CALLBACKS_H_
#define VEXO_DISCOVERY_USB_CALLBACKS_H_

#include <cstdint>

#include "platform/callback_registry.h"
#include "vexo/extend.h"

namespace vexo {

using UsbCallbackRegistry = platform::CallbackRegistry<USBMonitorCallback>;

// Returns the registry of the process.
UsbCallbackRegistry& UsbCallbacks();

// Calls them with the device's instance text, on the calling thread.
void DeliverUsbEvent(const char* device, int32_t event);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_USB_CALLBACKS_H_
