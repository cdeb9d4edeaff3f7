#include "port/windows/device_interfaces.h"

#include <algorithm>
#include <new>

namespace vexo {
namespace {

static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A) == 8, "the system checks the size of the record's head");

HDEVINFO ListDevices(const platform::SetupApi* api, const GUID& device_class, DWORD flags) {
  const bool has_class = IsEqualGUID(device_class, GUID{}) == 0;
  return api != nullptr && has_class ? api->GetClassDevs(&device_class, nullptr, nullptr, flags) : INVALID_HANDLE_VALUE;
}

// `find_relative` is GetParent or GetChild, which may succeed without returning a device. Returns 0 when there is none.
template <typename Find>
DEVINST FindRelative(Find find_relative, DEVINST device) {
  DEVINST relative = 0;
  return find_relative(&relative, device, 0) == CR_SUCCESS ? relative : 0;
}

void ReadId(const platform::SetupApi& api, DEVINST device, char* text, ULONG size) {
  if (device == 0 || api.GetDeviceId(device, text, size, 0) != CR_SUCCESS) {
    text[0] = '\0';
  }
  text[size - 1] = '\0';
}

}  // namespace

DeviceInfoList::DeviceInfoList(const GUID& device_class, DWORD flags)
    : api_(platform::LoadSetupApi()), list_(ListDevices(api_, device_class, flags)) {}

DeviceInfoList::~DeviceInfoList() {
  if (valid()) {
    api_->DestroyDeviceInfoList(list_);
  }
}

bool DeviceInterfaces::Next() {
  interface_.cbSize = sizeof(interface_);
  return list_.api().EnumDeviceInterfaces(list_.get(), nullptr, &class_, next_++, &interface_) != 0;
}

DeviceInterfaces::Detail DeviceInterfaces::ReadDetail() {
  DWORD size = 0;
  list_.api().GetDeviceInterfaceDetail(list_.get(), &interface_, nullptr, 0, &size, nullptr);
  if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A)) {
    return Detail::kGone;
  }
  if (size > detail_size_) {
    detail_.reset(new (std::nothrow) char[size]);
    detail_size_ = detail_ != nullptr ? size : 0;
    if (detail_ == nullptr) {
      return Detail::kNoMemory;
    }
  }
  detail()->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
  device_.cbSize = sizeof(device_);
  return list_.api().GetDeviceInterfaceDetail(list_.get(), &interface_, detail(), size, nullptr, &device_) != 0
             ? Detail::kRead
             : Detail::kGone;
}

bool DeviceInterfaces::ReadRegistryText(DWORD property, char* text, DWORD size) {
  DWORD length = 0;
  const bool read = list_.api().GetDeviceRegistryProperty(list_.get(), &device_, property, nullptr,
                                                          reinterpret_cast<BYTE*>(text), size, &length) != 0;
  text[read ? std::min(length, size - 1) : 0] = '\0';  // The registry does not guarantee a terminating zero.
  return read;
}

void DeviceInterfaces::ReadProperty(const DEVPROPKEY& key, UINT code_page, char (&text)[kPropertyTextSize]) {
  wchar_t units[kPropertyUnits + 1] = {};
  DEVPROPTYPE type = DEVPROP_TYPE_EMPTY;
  if (list_.api().GetDeviceProperty(list_.get(), &device_, &key, &type, reinterpret_cast<BYTE*>(units),
                                    kPropertyUnits * sizeof(wchar_t), nullptr, 0) == 0 ||
      WideCharToMultiByte(code_page, 0, units, -1, text, sizeof(text), nullptr, nullptr) == 0) {
    text[0] = '\0';
  }
}

void DeviceInterfaces::ReadChildId(char (&text)[kDeviceIdSize]) {
  ReadId(list_.api(), FindRelative(list_.api().GetChild, device_.DevInst), text, sizeof(text));
}

void DeviceInterfaces::ReadParentId(char (&text)[kDeviceIdSize]) {
  ReadId(list_.api(), FindRelative(list_.api().GetParent, device_.DevInst), text, sizeof(text));
}

void DeviceInterfaces::ReadParentLocation(char* text, ULONG size) {
  const DEVINST parent = FindRelative(list_.api().GetParent, device_.DevInst);
  ULONG length = size;
  const bool read = parent != 0 && list_.api().GetDevNodeRegistryProperty(parent, CM_DRP_LOCATION_INFORMATION, nullptr,
                                                                          text, &length, 0) == CR_SUCCESS;
  text[read ? std::min(length, size - 1) : 0] = '\0';
}

}  // namespace vexo
