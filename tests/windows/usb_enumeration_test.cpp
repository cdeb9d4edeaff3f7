// Listing, finding and opening USB devices through the exports. The test registers the devices with the system.
#include <gtest/gtest.h>
#include <windows.h>
// After windows.h.
#include <cfgmgr32.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simulators/registered_device.h"
#include "vexo/extend.h"
#include "windows/port_calls.h"
#include "windows/process_resources.h"
#include "windows/replaced_imports.h"

namespace vexo::test {
namespace {

using simulators::DeviceEntry;
using simulators::DeviceFile;
using simulators::kComPortClass;
using simulators::kDiskClass;
using simulators::kImagingClass;
using simulators::kInputClass;
using simulators::kModemClass;
using simulators::RegisteredDevice;

const DeviceEntry kModel = {"USB\\VID_1A2B&PID_0001\\ABC123", "usb\\vid_1a2b&pid_0001&rev_0100", "Port_#0001.Hub_#0002",
                            L"USBPRINT\\MODEL\\7&1A2B3C&0&USB001"};
const DeviceEntry kOtherModel = {"USB\\VID_1A2C&PID_B063\\def456", "USB\\VID_1A2C&PID_B063&REV_0100", "Port_#0002",
                                 L"USBPRINT\\Other\\7&1A2B3C&0&USB002"};
const DeviceEntry kGated = {"USB\\VID_0FE6&PID_811E\\GATED1", "USB\\VID_0FE6&PID_811E&REV_0100", "Port_#0003"};
const DeviceEntry kForeign = {"USB\\VID_04B8&PID_0202\\XYZ789", "USB\\VID_04B8&PID_0202&REV_0100", "Port_#0004"};
const DeviceEntry kNameless = {"USB\\VID_1A2D&PID_0101\\9&1", "USB\\VID_1A2D&PID_0101"};

constexpr char kModelRecord[] = "USB,ABC123;ABC123;MODEL;VID_1A2B&PID_0001;USB001;PORT_#0001.HUB_#0002";
constexpr char kForeignRecord[] = "USB,XYZ789;XYZ789; ;VID_04B8&PID_0202;;PORT_#0004";

// The parent of all devices, if a test defines one. Wine itself knows none.
struct ParentDevice {
  const char* id = nullptr;
  const char* location = nullptr;  // Null: no location.
};
ParentDevice g_parent;
constexpr DEVINST kParent = 4711;

// Child devices by parent, as the system creates them with the name that the driver gives the printer.
std::map<std::string, std::string> g_children;
std::string g_child;
constexpr DEVINST kChild = 4712;

CONFIGRET WINAPI GetParent(DEVINST* parent, DEVINST /*device*/, ULONG /*flags*/) {
  *parent = kParent;
  return g_parent.id != nullptr ? CR_SUCCESS : CR_NO_SUCH_DEVNODE;
}

CONFIGRET WINAPI GetDeviceId(DEVINST device, char* text, ULONG size, ULONG flags) {
  if (device != kParent && device != kChild) {
    return CM_Get_Device_IDA(device, text, size, flags);
  }
  strncpy(text, device == kParent ? g_parent.id : g_child.c_str(), size);
  return CR_SUCCESS;
}

CONFIGRET WINAPI GetChild(DEVINST* child, DEVINST device, ULONG /*flags*/) {
  char id[256] = "";
  CM_Get_Device_IDA(device, id, sizeof(id), 0);
  *child = kChild;
  g_child = g_children[id];
  return !g_child.empty() ? CR_SUCCESS : CR_NO_SUCH_DEVNODE;
}

CONFIGRET WINAPI GetRegistryProperty(DEVINST device, ULONG property, ULONG* /*type*/, void* text, ULONG* size,
                                     ULONG /*flags*/) {
  if (device != kParent || property != CM_DRP_LOCATION_INFORMATION || g_parent.location == nullptr) {
    return CR_NO_SUCH_VALUE;
  }
  *size = static_cast<ULONG>(strlen(g_parent.location));  // A registry text need not be terminated.
  memcpy(text, g_parent.location, *size);
  return CR_SUCCESS;
}

FARPROC WINAPI FindFunction(HMODULE library, const char* name) {
  const std::pair<const char*, void*> own[] = {
      {"CM_Get_Parent", reinterpret_cast<void*>(GetParent)},
      {"CM_Get_Child", reinterpret_cast<void*>(GetChild)},
      {"CM_Get_Device_IDA", reinterpret_cast<void*>(GetDeviceId)},
      {"CM_Get_DevNode_Registry_PropertyA", reinterpret_cast<void*>(GetRegistryProperty)}};
  for (const auto& [replaced, by] : own) {
    if (strcmp(name, replaced) == 0) {
      return reinterpret_cast<FARPROC>(by);
    }
  }
  return GetProcAddress(library, name);
}

class UsbEnumerationTest : public ::testing::Test {
 protected:
  // The library looks these functions up once, so they must be replaced first.
  static void SetUpTestSuite() {
    EXPECT_EQ(
        ReplaceImports(GetModuleHandleA("vexoextend.dll"), {{"GetProcAddress", reinterpret_cast<void*>(FindFunction)}}),
        1);
  }

  ~UsbEnumerationTest() override {
    DiskPortOpen(&handle_, "");
    RemoveConfiguration();
    g_parent = {};
    g_children.clear();
  }

  RegisteredDevice& Plug(const DeviceEntry& entry) {
    devices_.push_back(std::make_unique<RegisteredDevice>(entry));
    return *devices_.back();
  }

  static std::string List(int32_t size = 2000) {
    std::string buffer(static_cast<size_t>(size), '?');
    EXPECT_EQ(GetUsbDescList(buffer.data(), size), VEXO_OK);
    return buffer.c_str();
  }

  // Creates a closed USB port. Open searches for the printer.
  VexoPort* Make(const std::string& descriptor) {
    ScannerGunPortOpen(&handle_, descriptor.c_str());
    EXPECT_NE(handle_.port, nullptr) << descriptor;
    return handle_.port;
  }

  std::string Uri() const {
    char uri[256] = "";
    uint32_t length = 0;
    EXPECT_EQ(handle_.port->GetUri(handle_.port, uri, sizeof(uri), &length), VEXO_OK);
    return uri;
  }

  // The path of the device found, known even if it cannot be opened.
  std::string FoundPath() const {
    const std::string uri = Uri();
    const std::string key = "+deviceid=";
    const size_t at = uri.find(key);
    return at != std::string::npos ? uri.substr(at + key.size(), uri.find('+', at + 1) - at - key.size()) : "";
  }

  // Writes the file in a new directory and changes to it.
  void WriteConfiguration(const std::string& content) {
    GetCurrentDirectoryA(sizeof(home_), home_);
    ASSERT_NE(CreateDirectoryA("usb_configuration", nullptr), 0);
    ASSERT_NE(SetCurrentDirectoryA("usb_configuration"), 0);
    std::ofstream("vidpid_cfg.txt") << content;
  }
  void RemoveConfiguration() {
    if (home_[0] != '\0') {
      EXPECT_NE(DeleteFileA("vidpid_cfg.txt"), 0) << "still open";
      EXPECT_NE(SetCurrentDirectoryA(home_), 0);
      EXPECT_NE(RemoveDirectoryA("usb_configuration"), 0);
      home_[0] = '\0';
    }
  }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  std::vector<std::unique_ptr<RegisteredDevice>> devices_;
  char home_[MAX_PATH] = "";
};

TEST_F(UsbEnumerationTest, ListContainsEachPrinter) {
  EXPECT_EQ(List(), "");
  Plug(kForeign);
  DeviceEntry unplugged = kOtherModel;
  unplugged.connected = false;
  Plug(unplugged);
  EXPECT_EQ(List(), "");
  EXPECT_EQ(Make("USB")->Open(handle_.port), VEXO_ERROR_USB_NOT_FOUND);
  Plug(kModel);
  EXPECT_EQ(List(), kModelRecord);
  EXPECT_EQ(List(1), "");
  char buffer[1] = {'?'};
  EXPECT_EQ(GetUsbDescList(nullptr, 100), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(GetUsbDescList(buffer, 0), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(buffer[0], '?');
  for (const auto& [entry, record] :
       {std::pair(kOtherModel, "USB,def456;def456;Other;VID_1A2C&PID_B063;USB002;PORT_#0002"),
        {kGated, "USB,GATED1;GATED1; ;VID_0FE6&PID_811E;;PORT_#0003"},
        {kNameless, "USB,9&1;9&1; ;VID_1A2D&PID_ ;;"}}) {
    Plug(entry);
    const std::string list = '|' + List() + '|';
    EXPECT_NE(list.find('|' + std::string(record) + '|'), std::string::npos) << record << " in " << list;
  }
  devices_.clear();
  EXPECT_EQ(List(), "");
}

TEST_F(UsbEnumerationTest, WithAConfigurationFileEveryDeviceQualifies) {
  const std::string path = Plug(kForeign).path();
  Plug(kGated);
  const char* const foreign_printer = "USB,VID_0X04B8,PID_0X0202";
  EXPECT_EQ(Make("USB,XYZ789")->Open(handle_.port), VEXO_OK + ERROR_FILE_NOT_FOUND) << "the gated printer is selected";
  EXPECT_EQ(FoundPath(), devices_[1]->path());
  devices_.pop_back();
  EXPECT_EQ(Make(foreign_printer)->Open(handle_.port), VEXO_ERROR_USB_NOT_FOUND);
  for (const std::string& content : {std::string(), std::string(200'000, 'x')}) {
    WriteConfiguration(content);
    EXPECT_EQ(List(), kForeignRecord);
    EXPECT_EQ(Make(foreign_printer)->Open(handle_.port), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(FoundPath(), path);
    RemoveConfiguration();
  }
}

// The devices cannot be opened, as if they had been unplugged after they were found.
TEST_F(UsbEnumerationTest, DescriptorSelectsTheDevice) {
  const std::string model = Plug(kModel).path();
  const std::string other = Plug(kOtherModel).path();
  Plug(kForeign);
  Plug(kNameless);
  g_children = {{"USB\\VID_1A2B&PID_0001\\ABC123", "USBPRINT\\MODEL\\7&1A2B3C&0&USB001"},
                {"USB\\VID_1A2C&PID_B063\\DEF456", "USBPRINT\\OTHER\\7&1A2B3C&0&USB002"}};
  const std::pair<const char*, std::string> rows[] = {
      {"USB,ABC123", model},
      {"USB,USB001", model},
      {"USB,USB002", other},
      {"vexo:/dev/bus/USB/DEVICE?portnum=USB002", other},
      {"USB,DEF456", other},
      {"vexo:/dev/bus/USB/DEVICE?vid=1a2b+pid=0001", model},
      {"vexo:/dev/bus/USB/DEVICE?location=port_#0002+vid=9+pid=9", other},
      {"USB,XYZ789", ""},
      {"USB,9&1", ""},  // A device without a location is ignored.
  };
  for (const auto& [descriptor, path] : rows) {
    EXPECT_EQ(Make(descriptor)->Open(handle_.port),
              path.empty() ? VEXO_ERROR_USB_NOT_FOUND : static_cast<int32_t>(ERROR_FILE_NOT_FOUND))
        << descriptor;
    EXPECT_EQ(FoundPath(), path) << descriptor;
    EXPECT_EQ(handle_.port->CheckOpen(handle_.port), VEXO_ERROR_IO_NOT_OPEN);
  }
}

TEST_F(UsbEnumerationTest, PrinterIsOpenedAndItsUriContainsThePlace) {
  const std::string path = Plug(kModel).path();
  DeviceFile file(path);
  VexoPort* const port = Make("USB");
  EXPECT_EQ(Uri(), "vexo:/dev/bus/USB/DEVICE");
  const std::string uri = "vexo:/dev/bus/USB/DEVICE?location=PORT_#0001.HUB_#0002+deviceid=" + path + "+sn=ABC123";
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(port->Open(port), VEXO_OK);
    EXPECT_EQ(port->Open(port), VEXO_ERROR_IO_ALREADY_OPEN);
    EXPECT_EQ(Uri(), uri);
    EXPECT_EQ(Write(port, "job"), Written(VEXO_OK, 3));
    EXPECT_EQ(file.Receive(3), "job");
    EXPECT_EQ(port->Close(port), VEXO_OK);
    file.Renew();
  }
  ASSERT_EQ(Make(uri)->Open(handle_.port), VEXO_OK) << "the URI of an open port opens its printer";
  EXPECT_EQ(Uri(), uri);
}

TEST_F(UsbEnumerationTest, GatedPrinterIsSelectedByAnyUri) {
  const auto is_gated = [](VexoPort* port) {
    uint8_t gated = 2;
    EXPECT_EQ(port->Control(port, VEXO_CONTROL_USB_GET_READ_GATED, nullptr, nullptr, 0, &gated, 1, nullptr), VEXO_OK);
    return gated;
  };
  DeviceFile file(Plug(kGated).path());
  VexoPort* const port = Make("USB,VID_0X1A2B,PID_0X0001");
  ASSERT_EQ(port->Open(port), VEXO_OK);
  EXPECT_EQ(is_gated(port), 1);
  port->Close(port);
  devices_.clear();  // Another printer replaces it.
  DeviceFile other_file(Plug(kModel).path());
  ASSERT_EQ(port->Open(port), VEXO_OK);
  EXPECT_EQ(is_gated(port), 0);
}

TEST_F(UsbEnumerationTest, ExportsSearchTheirClasses) {
  const std::pair<decltype(&DiskPortOpen), const GUID&> rows[] = {{DiskPortOpen, kDiskClass},
                                                                  {ScannerPortOpen, kImagingClass},
                                                                  {ScannerGunPortOpen, kInputClass},
                                                                  {ScannerGunPortOpen, kComPortClass},
                                                                  {ScannerGunPortOpen, kModemClass}};
  for (const auto& [open, device_class] : rows) {
    DeviceEntry entry = kModel;
    entry.device_class = device_class;
    const std::string path = Plug(entry).path();
    entry = kForeign;
    entry.device_class = device_class;
    Plug(entry);
    DeviceFile file(path);
    for (const auto other : {DiskPortOpen, ScannerPortOpen, ScannerGunPortOpen}) {
      const bool finds = other == open;
      EXPECT_EQ(other(&handle_, "USB,VID_0X1A2B,PID_0X0001"), finds ? VEXO_OK : VEXO_ERROR_USB_NOT_FOUND) << path;
      EXPECT_EQ(handle_.portOpen, finds ? 1 : 0);
      EXPECT_EQ(FoundPath(), finds ? path : "");
      DiskPortOpen(&handle_, "");
      file.Renew();
    }
    EXPECT_EQ(open(&handle_, "USB,PORT_#0004"), VEXO_ERROR_USB_NOT_FOUND);
    devices_.clear();
  }
}

// A disk's own properties do not identify the printer; those of its parent do.
TEST_F(UsbEnumerationTest, DiskIsIdentifiedByItsParent) {
  DeviceEntry disk = {"USBSTOR\\DISK&VEN_X\\7&1", "USBSTOR\\DiskX"};
  disk.device_class = kDiskClass;
  const std::string path = Plug(disk).path();
  DeviceFile file(path);
  const struct {
    ParentDevice parent;
    const char* descriptor;
    bool finds;
  } rows[] = {{{}, "USB", false},
              {{"USB\\VID_04B8&PID_0202\\1", "Port_#0001"}, "USB", false},
              {{"USB\\VID_1A2B&PID_0001\\ABC123", nullptr}, "USB,VID_0X1A2B,PID_0X0001", true},
              {{"USB\\VID_1A2B&PID_0001\\ABC123", nullptr}, "USB,PORT_#0001", false},
              {{"USB\\VID_1A2B&PID_0001\\ABC123", "Port_#0001"}, "USB,PORT_#0001", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    g_parent = row.parent;
    EXPECT_EQ(DiskPortOpen(&handle_, row.descriptor), row.finds ? VEXO_OK : VEXO_ERROR_USB_NOT_FOUND);
    EXPECT_EQ(FoundPath(), row.finds ? path : "");
    if (row.finds) {
      EXPECT_EQ(Uri().find("location=PORT_#0001+") != std::string::npos, row.parent.location != nullptr);
    }
    DiskPortOpen(&handle_, "");
    file.Renew();
  }
}

TEST_F(UsbEnumerationTest, LeaksNothing) {
  DeviceFile file(Plug(kModel).path());
  Plug(kForeign);
  WriteConfiguration("");
  VexoPort* const port = Make("USB,ABC123");
  size_t handles = 0;
  for (int round = 0; round < 200; ++round) {
    const std::string list = List();
    EXPECT_EQ(std::count(list.begin(), list.end(), '|'), 1);
    ASSERT_EQ(port->Open(port), VEXO_OK);
    port->Close(port);
    file.Renew();
    VexoPrinterHandle other = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
    EXPECT_EQ(DiskPortOpen(&other, "USB,NOBODY"), VEXO_ERROR_USB_NOT_FOUND);
    EXPECT_EQ(DiskPortOpen(&other, ""), VEXO_ERROR_IO_SETTING);
    handles = round == 0 ? CountHandles() : handles;
  }
  EXPECT_EQ(CountHandles(), handles);
}

}  // namespace
}  // namespace vexo::test
