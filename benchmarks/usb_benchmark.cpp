// Cost of listing and searching 200 USB printers, compared with an enumeration of the system's interfaces that only
// reads the same properties.
#include <windows.h>
// After windows.h.
#include <cfgmgr32.h>
#include <devpropdef.h>
#include <setupapi.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "measure.h"
#include "simulators/registered_device.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

constexpr int kPrinters = 200;
constexpr int kRounds = 21;
constexpr int32_t kRoomForARecord = 256;

constexpr DEVPROPKEY kBusRelations = {{0x4340A6C5, 0x93FA, 0x4706, {0x97, 0x2C, 0x7B, 0x64, 0x80, 0x08, 0xA5, 0xA7}},
                                      7};
constexpr DEVPROPKEY kInstanceId = {{0x78C34FC8, 0x104A, 0x4ACA, {0x9E, 0xA4, 0x52, 0x4D, 0x52, 0x99, 0x6E, 0x57}},
                                    256};

using Printers = std::vector<std::unique_ptr<simulators::RegisteredDevice>>;

Printers RegisterPrinters() {
  Printers printers;
  for (int i = 0; i < kPrinters; ++i) {
    const std::string number = std::to_string(1000 + i);
    printers.push_back(std::make_unique<simulators::RegisteredDevice>(simulators::DeviceEntry{
        "USB\\VID_1A2B&PID_0001\\BENCH" + number, "USB\\VID_1A2B&PID_0001&REV_0100", "PORT_#" + number + ".HUB_#0001",
        L"USBPRINT\\MODEL\\7&1A2B3C&0&USB" + std::wstring(number.begin(), number.end())}));
  }
  return printers;
}

// `read_others` reads properties that only one of the measurements needs. @return the number of devices.
template <typename ReadOthers>
int BareWalk(std::initializer_list<DEVPROPKEY> properties, ReadOthers read_others) {
  const HDEVINFO list =
      SetupDiGetClassDevsA(&simulators::kPrinterClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  SP_DEVICE_INTERFACE_DATA interface_data = {sizeof(interface_data), {}, 0, 0};
  int devices = 0;
  for (; SetupDiEnumDeviceInterfaces(list, nullptr, &simulators::kPrinterClass, static_cast<DWORD>(devices),
                                     &interface_data);
       ++devices) {
    DWORD size = 0;
    SetupDiGetDeviceInterfaceDetailA(list, &interface_data, nullptr, 0, &size, nullptr);
    const std::unique_ptr<char[]> memory(new char[size]);
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(memory.get());
    detail->cbSize = sizeof(*detail);
    SP_DEVINFO_DATA device = {sizeof(device), {}, 0, 0};
    SetupDiGetDeviceInterfaceDetailA(list, &interface_data, detail, size, nullptr, &device);
    for (const DWORD property : {SPDRP_HARDWAREID, SPDRP_LOCATION_INFORMATION}) {
      BYTE text[256];
      SetupDiGetDeviceRegistryPropertyA(list, &device, property, nullptr, text, sizeof(text), nullptr);
    }
    for (const DEVPROPKEY& key : properties) {
      BYTE text[512];
      DEVPROPTYPE type = 0;
      SetupDiGetDevicePropertyW(list, &device, &key, &type, text, sizeof(text), nullptr, 0);
    }
    read_others(device);
  }
  SetupDiDestroyDeviceInfoList(list);
  return devices;
}

int BareList() {
  return BareWalk({kBusRelations, kInstanceId}, [](const SP_DEVINFO_DATA&) {});
}

int BareSearch() {
  return BareWalk({kBusRelations, kInstanceId}, [](const SP_DEVINFO_DATA& device) {
    DEVINST child = 0;
    char id[256];
    if (CM_Get_Child(&child, device.DevInst, 0) == CR_SUCCESS && child != 0) {
      CM_Get_Device_IDA(child, id, sizeof(id), 0);
    }
  });
}

template <typename Product, typename Bare>
void Compare(const char* measure, Product product, Bare bare) {
  std::vector<double> product_seconds;
  std::vector<double> bare_seconds;
  for (int round = 0; round < kRounds; ++round) {
    product_seconds.push_back(Seconds([&] { Require(product(), measure); }));
    bare_seconds.push_back(Seconds([&] { Require(bare() == kPrinters, "bare walk"); }));
  }
  std::fprintf(stderr, "%s: %.1f ms, bare %.1f ms\n", measure, 1000 * Median(product_seconds),
               1000 * Median(bare_seconds));
  Report(measure, Median(product_seconds) / Median(bare_seconds), "<=", 1.1);
}

void MeasureAll() {
  const Printers printers = RegisterPrinters();
  std::string list(kPrinters * kRoomForARecord, '\0');
  Compare(
      "listing 200 USB printers, against bare",
      [&] {
        return GetUsbDescList(list.data(), static_cast<int32_t>(list.size())) == VEXO_OK &&
               std::count(list.begin(), list.end(), '|') == kPrinters - 1;
      },
      BareList);

  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  DiskPortOpen(&handle, "USB,NOBODY");
  Compare(
      "searching 200 USB printers, against bare",
      [&] { return handle.port->Open(handle.port) == VEXO_ERROR_USB_NOT_FOUND; }, BareSearch);
  DiskPortOpen(&handle, "");
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  vexo::benchmark::MeasureAll();
  return 0;
}
