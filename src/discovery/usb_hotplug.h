// The USB hot-plug monitor of the process: a thread that receives the system's device notifications.
//
// Compatibility: a failure to create the window or to register for notifications is silent. The monitor counts as
// started until it is stopped, even if its thread has already ended.
#ifndef VEXO_DISCOVERY_USB_HOTPLUG_H_
#define VEXO_DISCOVERY_USB_HOTPLUG_H_

namespace vexo {

// Has no effect when it is already started. Returns false when no thread can be created.
bool StartUsbHotplugMonitor();

// Ends the thread, if there is one, waits for it, and unregisters the window class. On the monitor's own thread, which
// cannot join itself, throws std::system_error (resource deadlock would occur); the thread ends nevertheless.
//
// Compatibility: also removes all callbacks, so a host must add them again after a restart.
void StopUsbHotplugMonitor();

}  // namespace vexo

#endif  // VEXO_DISCOVERY_USB_HOTPLUG_H_
