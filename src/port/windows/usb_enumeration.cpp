#include "port/usb_enumeration.h"

#include <iterator>

#include "port/bounded_text.h"
#include "port/usb_configuration.h"
#include "port/usb_description.h"
#include "port/windows/device_interfaces.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr DWORD kPresentInterfaces = DIGCF_PRESENT | DIGCF_DEVICEINTERFACE;
constexpr size_t kRegistryTextSize = 256;
constexpr size_t kServiceSize = 32;

constexpr GUID kPrinterClass = {0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};

// Compatibility: the device classes that the port-open exports search, by index. Setup classes are not interfaces, but
// devices that register an interface under their GUID are found.
constexpr struct {
  GUID device_class;
  DWORD flags;
} kDeviceClasses[] = {
    // Disks.
    {{0x53F56307, 0xB6BF, 0x11D0, {0x94, 0xF2, 0x00, 0xA0, 0xC9, 0x1E, 0xFB, 0x8B}}, kPresentInterfaces},
    // Keyboards and other input devices (HID).
    {{0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}}, kPresentInterfaces},
    // Ports, as a setup class.
    {{0x4D36E978, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}}, DIGCF_PRESENT},
    // Modems, as a setup class.
    {{0x4D36E96D, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}}, DIGCF_PRESENT},
    // COM ports.
    {{0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}}, kPresentInterfaces},
    // Modems.
    {{0x2C7089AA, 0x2E0E, 0x11D1, {0xB1, 0x14, 0x00, 0xC0, 0x4F, 0xC2, 0xAA, 0xE4}}, kPresentInterfaces},
    // Imaging devices.
    {{0x6BDD1FC6, 0x810F, 0x11D0, {0xBE, 0xC7, 0x08, 0x00, 0x2B, 0xE2, 0x09, 0x2F}}, kPresentInterfaces},
};

constexpr DEVPROPKEY kBusRelations = {{0x4340A6C5, 0x93FA, 0x4706, {0x97, 0x2C, 0x7B, 0x64, 0x80, 0x08, 0xA5, 0xA7}},
                                      7};
constexpr DEVPROPKEY kInstanceId = {{0x78C34FC8, 0x104A, 0x4ACA, {0x9E, 0xA4, 0x52, 0x4D, 0x52, 0x99, 0x6E, 0x57}},
                                    256};

enum class Parents { kIgnored, kCount };

// The buffers for one device's texts.
struct DeviceTexts {
  UsbDevice View() const { return {hardware_id, location, bus_relations, instance_id, child_id, parent_id}; }

  char hardware_id[kRegistryTextSize] = "";
  char location[kRegistryTextSize] = "";
  char bus_relations[DeviceInterfaces::kPropertyTextSize] = "";
  char instance_id[DeviceInterfaces::kPropertyTextSize] = "";
  char child_id[DeviceInterfaces::kDeviceIdSize] = "";
  char parent_id[DeviceInterfaces::kDeviceIdSize] = "";
};

bool ReadUpperCased(DeviceInterfaces* devices, DWORD property, char (&text)[kRegistryTextSize]) {
  const bool read = devices->ReadRegistryText(property, text);
  UpperCaseAscii(text);
  return read;
}

UsbQualification Qualify(UsbQualifier* qualifier, DeviceInterfaces* devices, const UsbDevice& device) {
  const UsbQualification qualification = qualifier->Qualify(device);
  if (qualification == UsbQualification::kNone && qualifier->wants_service()) {
    char service[kServiceSize] = "";
    if (devices->ReadRegistryText(SPDRP_SERVICE, service)) {
      qualifier->NoteService(service);
    }
  }
  return qualification;
}

int32_t SystemFailure() {
  const DWORD error = GetLastError();
  return error != ERROR_SUCCESS ? static_cast<int32_t>(error) : VEXO_ERROR_IO;
}

// Returns false when a required text is missing. A printer must have a location; a disk or a scanner gun without one
// takes its parent's.
bool ReadForSearch(DeviceInterfaces* devices, Parents parents, DeviceTexts* texts) {
  if (!ReadUpperCased(devices, SPDRP_HARDWAREID, texts->hardware_id)) {
    return false;
  }
  const bool has_location = ReadUpperCased(devices, SPDRP_LOCATION_INFORMATION, texts->location);
  if (parents == Parents::kIgnored) {
    return has_location;
  }
  devices->ReadParentId(texts->parent_id);
  if (!has_location) {
    devices->ReadParentLocation(texts->location);
    UpperCaseAscii(texts->location);
  }
  return true;
}

// Reads the device of the current interface and decides on it. Only qualified devices are asked for all texts.
bool IsSelected(DeviceInterfaces* devices, Parents parents, UsbQualifier* qualifier, const UsbCriteria& criteria,
                DeviceTexts* texts, bool* gated) {
  if (!ReadForSearch(devices, parents, texts)) {
    return false;
  }
  const UsbQualification qualification = Qualify(qualifier, devices, texts->View());
  if (qualification == UsbQualification::kNone) {
    return false;
  }
  devices->ReadProperty(kBusRelations, CP_ACP, texts->bus_relations);
  devices->ReadProperty(kInstanceId, CP_ACP, texts->instance_id);
  devices->ReadChildId(texts->child_id);
  *gated = qualification == UsbQualification::kGated;
  return *gated || MatchesUsbCriteria(texts->View(), criteria);
}

FoundUsbDevice Found(const char* path, const DeviceTexts& texts, Parents parents, bool gated) {
  FoundUsbDevice found;
  CopyText(found.path, sizeof(found.path), path);
  CopyText(found.location, sizeof(found.location), texts.location);
  found.has_serial = parents == Parents::kIgnored;
  // The serial is the end of a longer text and shares its terminating zero.
  CopyText(found.serial, sizeof(found.serial), UsbSerial(texts.instance_id).value_or("").data());
  UpperCaseAscii(found.serial);
  found.gated = gated;
  return found;
}

int32_t Search(DeviceInterfaces* devices, Parents parents, const UsbCriteria& criteria, FoundUsbDevice* found) {
  UsbQualifier qualifier(IsConfiguredDevice);
  while (devices->Next()) {
    const DeviceInterfaces::Detail detail = devices->ReadDetail();
    if (detail == DeviceInterfaces::Detail::kNoMemory) {
      return VEXO_ERROR_OUT_OF_MEMORY;
    }
    DeviceTexts texts;
    bool gated = false;
    if (detail == DeviceInterfaces::Detail::kRead &&
        IsSelected(devices, parents, &qualifier, criteria, &texts, &gated)) {
      *found = Found(devices->path(), texts, parents, gated);
      return VEXO_OK;
    }
  }
  return VEXO_ERROR_USB_NOT_FOUND;
}

// The list is in the code page of the calling thread. It uses the same location as the search, so that a printer can be
// opened by what the list shows.
void ReadForDescription(DeviceInterfaces* devices, DeviceTexts* texts) {
  devices->ReadProperty(kBusRelations, CP_THREAD_ACP, texts->bus_relations);
  devices->ReadProperty(kInstanceId, CP_THREAD_ACP, texts->instance_id);
  ReadUpperCased(devices, SPDRP_LOCATION_INFORMATION, texts->location);
}

}  // namespace

int32_t ResolveUsbDevicePath(const UsbCriteria& criteria, FoundUsbDevice* found) {
  SetLastError(ERROR_SUCCESS);
  DeviceInterfaces devices(kPrinterClass, kPresentInterfaces);
  return devices.valid() ? Search(&devices, Parents::kIgnored, criteria, found) : SystemFailure();
}

int32_t FindUsbDeviceOfClass(const UsbCriteria& criteria, uint32_t first_class, uint32_t class_count,
                             FoundUsbDevice* found) {
  SetLastError(ERROR_SUCCESS);
  int32_t result = VEXO_OK;
  for (uint32_t i = first_class; i < std::size(kDeviceClasses) && i - first_class < class_count; ++i) {
    DeviceInterfaces devices(kDeviceClasses[i].device_class, kDeviceClasses[i].flags);
    result = devices.valid() ? Search(&devices, Parents::kCount, criteria, found) : SystemFailure();
    if (result == VEXO_OK || result == VEXO_ERROR_OUT_OF_MEMORY) {
      break;
    }
  }
  return result;
}

int32_t ListUsbPrinters(char* buffer, size_t size) {
  UsbDescriptionList list(buffer, size);
  SetLastError(ERROR_SUCCESS);
  DeviceInterfaces devices(kPrinterClass, kPresentInterfaces);
  if (!devices.valid()) {
    return SystemFailure();
  }
  UsbQualifier qualifier(IsConfiguredDevice);
  while (devices.Next()) {
    DeviceTexts texts;
    if (devices.ReadDetail() != DeviceInterfaces::Detail::kRead) {
      continue;
    }
    ReadUpperCased(&devices, SPDRP_HARDWAREID, texts.hardware_id);
    if (Qualify(&qualifier, &devices, texts.View()) == UsbQualification::kNone) {
      continue;
    }
    ReadForDescription(&devices, &texts);
    list.Add(texts.View());
  }
  list.Finish();
  return VEXO_OK;
}

}  // namespace vexo
