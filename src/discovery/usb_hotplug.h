// The USB hot-plug monitor of the process: a thread that hears from the system which printers come and go.
//
// A started monitor counts as started until it is stopped, also when its thread has ended early because the system
// tells it nothing.
#ifndef VEXO_DISCOVERY_USB_HOTPLUG_H_
#define VEXO_DISCOVERY_USB_HOTPLUG_H_

namespace vexo {

// Nothing happens when it has been started. False: the system has no thread to give.
bool StartUsbHotplugMonitor();

// Ends the thread, if there is one, waits for it, and removes all callbacks from UsbCallbacks(). Throws
// std::system_error (resource deadlock would occur) on the thread itself, which cannot wait for its own end; it ends
// all the same.
void StopUsbHotplugMonitor();

}  // namespace vexo

#endif  // VEXO_DISCOVERY_USB_HOTPLUG_H_
