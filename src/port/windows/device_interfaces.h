// The device interfaces of one class.
#ifndef VEXO_PORT_WINDOWS_DEVICE_INTERFACES_H_
#define VEXO_PORT_WINDOWS_DEVICE_INTERFACES_H_

#include <cstddef>
#include <memory>

#include "platform/windows/setup_api.h"

namespace vexo {

// Owns a list of devices. An all-zero class gives no list.
class DeviceInfoList {
 public:
  DeviceInfoList(const GUID& device_class, DWORD flags);
  DeviceInfoList(const DeviceInfoList&) = delete;
  DeviceInfoList& operator=(const DeviceInfoList&) = delete;
  ~DeviceInfoList();

  bool valid() const { return list_ != INVALID_HANDLE_VALUE; }

  // Valid lists only.
  const platform::SetupApi& api() const { return *api_; }
  HDEVINFO get() const { return list_; }

 private:
  const platform::SetupApi* const api_;
  const HDEVINFO list_;
};

// Iterates over the interfaces of a class. Reads texts into the caller's buffers, never truncated: a text that does not
// fit counts as missing, and a missing text is empty.
class DeviceInterfaces {
 public:
  DeviceInterfaces(const GUID& device_class, DWORD flags) : class_(device_class), list_(device_class, flags) {}

  // Returns false when the system cannot list its devices; GetLastError gives the reason.
  bool valid() const { return list_.valid(); }

  // Returns false at the end.
  bool Next();

  // Reads the path of the interface, after which the other texts can be read. Fails for a device that has been
  // unplugged.
  enum class Detail { kRead, kGone, kNoMemory };
  Detail ReadDetail();
  const char* path() const { return detail()->DevicePath; }

  // `property` is an SPDRP_ constant. Returns false when it is missing.
  template <size_t size>
  bool ReadRegistryText(DWORD property, char (&text)[size]) {
    return ReadRegistryText(property, text, size);
  }

  // Reads a Unicode text of at most 256 units, converted to a code page of the system. All code pages need less than 8
  // bytes per unit.
  static constexpr DWORD kPropertyUnits = 256;
  static constexpr size_t kPropertyTextSize = 8 * kPropertyUnits;
  void ReadProperty(const DEVPROPKEY& key, UINT code_page, char (&text)[kPropertyTextSize]);

  static constexpr ULONG kDeviceIdSize = 256;
  void ReadChildId(char (&text)[kDeviceIdSize]);

  // Texts of the parent device; empty if there is none.
  void ReadParentId(char (&text)[kDeviceIdSize]);
  template <size_t size>
  void ReadParentLocation(char (&text)[size]) {
    ReadParentLocation(text, size);
  }

 private:
  SP_DEVICE_INTERFACE_DETAIL_DATA_A* detail() const {
    return reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(detail_.get());
  }
  bool ReadRegistryText(DWORD property, char* text, DWORD size);
  void ReadParentLocation(char* text, ULONG size);

  const GUID class_;
  const DeviceInfoList list_;
  DWORD next_ = 0;
  SP_DEVICE_INTERFACE_DATA interface_ = {};
  SP_DEVINFO_DATA device_ = {};
  std::unique_ptr<char[]> detail_;  // Grows to the longest path.
  DWORD detail_size_ = 0;
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_DEVICE_INTERFACES_H_
