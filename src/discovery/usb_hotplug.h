// The USB hot-plug monitor of the process: a thread that runs the message loop of a UsbMonitorWindow.
//
// A monitor that has been started counts as started until it is stopped, also when its thread has ended early: the
// system gave no window, or somebody closed it.
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
