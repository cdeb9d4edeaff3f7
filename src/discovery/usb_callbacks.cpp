#include "discovery/usb_callbacks.h"

namespace vexo {
namespace {

platform::RecursiveMutex g_lock;
UsbCallbackRegistry g_callbacks(&g_lock);

}  // namespace

UsbCallbackRegistry& UsbCallbacks() { return g_callbacks; }

void DeliverUsbEvent(const char* device, int32_t event) {
  g_callbacks.Deliver([=](USBMonitorCallback callback, void* context) { callback(context, device, event); });
}

}  // namespace vexo
