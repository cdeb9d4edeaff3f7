#include "simulators/registered_device.h"

#include <setupapi.h>
// After windows.h, which they do not include.
#include <devpropdef.h>
#include <winternl.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace vexo::simulators {
namespace {

constexpr char kSystemKey[] = "System\\CurrentControlSet\\";
constexpr GUID kUsbDevices = {0x36FC9E60, 0xC465, 0x11CF, {0x80, 0x56, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};
constexpr DEVPROPKEY kBusRelations = {{0x4340A6C5, 0x93FA, 0x4706, {0x97, 0x2C, 0x7B, 0x64, 0x80, 0x08, 0xA5, 0xA7}},
                                      7};
constexpr DEVPROPKEY kInstanceId = {{0x78C34FC8, 0x104A, 0x4ACA, {0x9E, 0xA4, 0x52, 0x4D, 0x52, 0x99, 0x6E, 0x57}},
                                    256};

void Require(bool succeeded, const char* what) {
  if (!succeeded) {
    std::fprintf(stderr, "no device for the test: %s, error %lu\n", what, GetLastError());
    std::_Exit(1);
  }
}

std::string LowerCased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

std::string GuidText(const GUID& guid) {
  char text[40];
  std::snprintf(text, sizeof(text), "{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", guid.Data1, guid.Data2,
                guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5],
                guid.Data4[6], guid.Data4[7]);
  return text;
}

// The name that the system gives to the interface of a device: "USB#VID_1A2B&PID_0001#ABC123#{...}".
std::string InterfaceName(const DeviceEntry& entry) {
  std::string name = entry.instance_id;
  std::replace(name.begin(), name.end(), '\\', '#');
  return name + '#' + GuidText(entry.device_class);
}

class DeviceWriter {
 public:
  explicit DeviceWriter(const DeviceEntry& entry) {
    Require(
        SetupDiCreateDeviceInfoA(list_, entry.instance_id.c_str(), &kUsbDevices, nullptr, nullptr, 0, &device_) != 0,
        "SetupDiCreateDeviceInfo");
    Require(SetupDiRegisterDeviceInfo(list_, &device_, 0, nullptr, nullptr, nullptr) != 0, "SetupDiRegisterDeviceInfo");
    SetText(SPDRP_HARDWAREID, entry.hardware_id);
    SetText(SPDRP_LOCATION_INFORMATION, entry.location);
    SetText(SPDRP_SERVICE, "usbprint");
    SetProperty(kBusRelations, DEVPROP_TYPE_STRING_LIST, entry.bus_relations);
    SetProperty(kInstanceId, DEVPROP_TYPE_STRING, std::wstring(entry.instance_id.begin(), entry.instance_id.end()));
    Require(SetupDiCreateDeviceInterfaceA(list_, &device_, &entry.device_class, nullptr, 0, nullptr) != 0,
            "SetupDiCreateDeviceInterface");
  }
  DeviceWriter(const DeviceWriter&) = delete;
  DeviceWriter& operator=(const DeviceWriter&) = delete;
  ~DeviceWriter() { SetupDiDestroyDeviceInfoList(list_); }

 private:
  // A list of texts ends with two zeros, and does no harm where one text is meant.
  void SetText(DWORD property, std::string text) {
    if (!text.empty()) {
      text += std::string(2, '\0');
      Require(SetupDiSetDeviceRegistryPropertyA(list_, &device_, property, reinterpret_cast<const BYTE*>(text.data()),
                                                static_cast<DWORD>(text.size())) != 0,
              "SetupDiSetDeviceRegistryProperty");
    }
  }

  void SetProperty(const DEVPROPKEY& key, DEVPROPTYPE type, std::wstring text) {
    // Not in the import libraries of all toolchains.
    const auto set = reinterpret_cast<BOOL(WINAPI*)(HDEVINFO, PSP_DEVINFO_DATA, const DEVPROPKEY*, DEVPROPTYPE,
                                                    const BYTE*, DWORD, DWORD)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("setupapi.dll"), "SetupDiSetDevicePropertyW")));
    if (!text.empty()) {
      text += std::wstring(type == DEVPROP_TYPE_STRING_LIST ? 2 : 1, L'\0');
      Require(set(list_, &device_, &key, type, reinterpret_cast<const BYTE*>(text.data()),
                  static_cast<DWORD>(text.size() * sizeof(wchar_t)), 0) != 0,
              "SetupDiSetDeviceProperty");
    }
  }

  const HDEVINFO list_ = SetupDiCreateDeviceInfoList(nullptr, nullptr);
  SP_DEVINFO_DATA device_ = {sizeof(SP_DEVINFO_DATA), {}, 0, 0};
};

// Without this mark the interface is one of a device that is not connected.
void MarkConnected(const std::string& interface_key) {
  HKEY key = nullptr;
  const DWORD linked = 1;
  Require(RegCreateKeyExA(HKEY_LOCAL_MACHINE, (interface_key + "\\#\\Control").c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &key, nullptr) == ERROR_SUCCESS &&
              RegSetValueExA(key, "Linked", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&linked), sizeof(linked)) ==
                  ERROR_SUCCESS,
          "Linked");
  RegCloseKey(key);
}

std::string NewPipeName() {
  static int number = 0;
  return "vexo_usb_" + std::to_string(GetCurrentProcessId()) + '_' + std::to_string(++number);
}

HANDLE MakePipe(const std::string& name) {
  const HANDLE pipe =
      CreateNamedPipeA(("\\\\.\\pipe\\" + name).c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
  Require(pipe != INVALID_HANDLE_VALUE, "CreateNamedPipe");
  return pipe;
}

}  // namespace

RegisteredDevice::RegisteredDevice(const DeviceEntry& entry)
    : device_key_(std::string(kSystemKey) + "Enum\\" + entry.instance_id),
      interface_key_(std::string(kSystemKey) + "Control\\DeviceClasses\\" + GuidText(entry.device_class) + "\\##?#" +
                     InterfaceName(entry)),
      path_("\\\\?\\" + LowerCased(InterfaceName(entry))) {
  Unregister();  // A program that was killed may have left it.
  const DeviceWriter writer(entry);
  if (entry.connected) {
    MarkConnected(interface_key_);
  }
}

RegisteredDevice::~RegisteredDevice() { Unregister(); }

void RegisteredDevice::Unregister() const {
  RegDeleteTreeA(HKEY_LOCAL_MACHINE, interface_key_.c_str());
  RegDeleteTreeA(HKEY_LOCAL_MACHINE, device_key_.c_str());
}

DeviceLink::DeviceLink(const std::string& path, const std::string& pipe_name) {
  const auto link = reinterpret_cast<NTSTATUS(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*, UNICODE_STRING*)>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtCreateSymbolicLinkObject")));
  constexpr ACCESS_MASK kAllAccess = 0xF0001;
  const std::string rest = path.substr(4);  // Behind "\\?\".
  std::wstring from = L"\\??\\" + std::wstring(rest.begin(), rest.end());
  std::wstring to = L"\\Device\\NamedPipe\\" + std::wstring(pipe_name.begin(), pipe_name.end());
  UNICODE_STRING from_text;
  UNICODE_STRING to_text;
  RtlInitUnicodeString(&from_text, from.c_str());
  RtlInitUnicodeString(&to_text, to.c_str());
  OBJECT_ATTRIBUTES attributes;
  InitializeObjectAttributes(&attributes, &from_text, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
  Require(link(&link_, kAllAccess, &attributes, &to_text) == 0, "NtCreateSymbolicLinkObject");
}

DeviceFile::DeviceFile(const std::string& path) : name_(NewPipeName()), pipe_(MakePipe(name_)), link_(path, name_) {}

DeviceFile::~DeviceFile() { CloseHandle(pipe_); }

void DeviceFile::Renew() {
  CloseHandle(pipe_);
  pipe_ = MakePipe(name_);
}

void DeviceFile::Send(const std::string& bytes) {
  DWORD written = 0;
  Require(WriteFile(pipe_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) != 0, "WriteFile");
}

std::string DeviceFile::Receive(DWORD length) {
  std::string bytes(length, '\0');
  DWORD read = 0;
  Require(ReadFile(pipe_, bytes.data(), length, &read, nullptr) != 0, "ReadFile");
  bytes.resize(read);
  return bytes;
}

}  // namespace vexo::simulators
