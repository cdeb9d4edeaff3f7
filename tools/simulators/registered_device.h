// USB devices that the system lists though nobody has plugged them in: the test writes them into the registry. What a
// device has nothing of, the system does not tell.
#ifndef VEXO_TOOLS_SIMULATORS_REGISTERED_DEVICE_H_
#define VEXO_TOOLS_SIMULATORS_REGISTERED_DEVICE_H_

#include <windows.h>

#include <string>

namespace vexo::simulators {

inline constexpr GUID kPrinterClass = {0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};
inline constexpr GUID kDiskClass = {0x53F56307, 0xB6BF, 0x11D0, {0x94, 0xF2, 0x00, 0xA0, 0xC9, 0x1E, 0xFB, 0x8B}};
inline constexpr GUID kInputClass = {0x4D1E55B2, 0xF16F, 0x11CF, {0x88, 0xCB, 0x00, 0x11, 0x11, 0x00, 0x00, 0x30}};
inline constexpr GUID kComPortClass = {0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};
inline constexpr GUID kModemClass = {0x2C7089AA, 0x2E0E, 0x11D1, {0xB1, 0x14, 0x00, 0xC0, 0x4F, 0xC2, 0xAA, 0xE4}};
inline constexpr GUID kImagingClass = {0x6BDD1FC6, 0x810F, 0x11D0, {0xBE, 0xC7, 0x08, 0x00, 0x2B, 0xE2, 0x09, 0x2F}};

struct DeviceEntry {
  std::string instance_id;  // "USB\\VID_1A2B&PID_0001\\ABC123"
  std::string hardware_id = {};
  std::string location = {};
  std::wstring bus_relations = {};
  GUID device_class = kPrinterClass;
  bool connected = true;
};

// Known to the system while it lives. The driver is the system's own for printers.
class RegisteredDevice {
 public:
  explicit RegisteredDevice(const DeviceEntry& entry);
  RegisteredDevice(const RegisteredDevice&) = delete;
  RegisteredDevice& operator=(const RegisteredDevice&) = delete;
  ~RegisteredDevice();

  // Of its device file, as the system lists it.
  const std::string& path() const { return path_; }

 private:
  void Unregister() const;

  const std::string device_key_;
  const std::string interface_key_;
  std::string path_;
};

// While it lives, opening a device's path opens the named pipe "\\\\.\\pipe\\<name>".
class DeviceLink {
 public:
  DeviceLink(const std::string& path, const std::string& pipe_name);
  DeviceLink(const DeviceLink&) = delete;
  DeviceLink& operator=(const DeviceLink&) = delete;
  ~DeviceLink() { CloseHandle(link_); }

 private:
  HANDLE link_ = nullptr;
};

// A device file at such a path: a pipe whose other end is the test's.
class DeviceFile {
 public:
  explicit DeviceFile(const std::string& path);
  DeviceFile(const DeviceFile&) = delete;
  DeviceFile& operator=(const DeviceFile&) = delete;
  ~DeviceFile();

  HANDLE pipe() const { return pipe_; }

  void Send(const std::string& bytes);
  std::string Receive(DWORD length);

  // Lets the file be opened again, after a port has closed it.
  void Renew();

 private:
  const std::string name_;
  HANDLE pipe_;
  const DeviceLink link_;
};

}  // namespace vexo::simulators

#endif  // VEXO_TOOLS_SIMULATORS_REGISTERED_DEVICE_H_
