#include "api/contain.h"
#include "discovery/usb_callbacks.h"
#include "discovery/usb_hotplug.h"
#include "vexo/extend.h"

int32_t StartUSBMonitorThread(void) { return vexo::StartUsbHotplugMonitor() ? VEXO_OK : VEXO_ERROR_OUT_OF_MEMORY; }

int32_t StopUSBMonitorThread(void) {
  vexo::StopUsbHotplugMonitor();
  return VEXO_OK;
}

int64_t AddUSBMonitor(USBMonitorCallback callback, void* context) {
  if (callback == nullptr) {
    return 0;
  }
  return vexo::ContainOutOfMemory([=] { return vexo::UsbCallbacks().Add(callback, context); });
}

int32_t RemoveUSBMonitor(USBMonitorCallback callback) {
  constexpr int32_t kRemoved = 1;  // Compatibility: returned whether or not the callback was registered.
  vexo::UsbCallbacks().Remove(vexo::UsbCallbackRegistry::KeyOf(callback));
  return kRemoved;
}
