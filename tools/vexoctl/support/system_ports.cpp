#include "vexoctl/support/system_ports.h"

#include <windows.h>

#include <algorithm>
#include <string_view>
#include <system_error>

#include "vexoctl/console/failure.h"
#include "vexoctl/console/text.h"

namespace vexoctl {
namespace {

class RegistryKey {
 public:
  explicit RegistryKey(const char* path) {
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key_) != ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() {
    if (key_ != nullptr) {
      RegCloseKey(key_);
    }
  }

  // The texts in the key; none if there is no such key.
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (DWORD i = 0; key_ != nullptr; ++i) {
      char name[256];
      DWORD name_length = sizeof name;
      char text[256];
      DWORD size = sizeof text;
      DWORD type = 0;
      const LSTATUS status =
          RegEnumValueA(key_, i, name, &name_length, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
      if (status == ERROR_NO_MORE_ITEMS) {
        break;
      }
      if (status == ERROR_SUCCESS && type == REG_SZ) {
        texts.emplace_back(std::string(text, size).c_str());
      }
    }
    return texts;
  }

 private:
  HKEY key_ = nullptr;
};

// The number in a port's name: 3 in "COM3", also in "\DosDevices\LPT3". 0 if there is none.
int NumberOf(std::string_view name, std::string_view kind) {
  const size_t at = name.rfind(kind);
  if (at == std::string_view::npos || name.size() > at + kind.size() + 4) {
    return 0;
  }
  int number = 0;
  for (const char c : name.substr(at + kind.size())) {
    if (c < '0' || c > '9') {
      return 0;
    }
    number = number * 10 + (c - '0');
  }
  return number;
}

// Drivers register their ports here. Opening the ports to find them would disturb the lines.
std::vector<std::string> PortsOf(const char* registry_path, const std::string& kind) {
  std::vector<int> numbers;
  for (const std::string& text : RegistryKey(registry_path).Texts()) {
    numbers.push_back(NumberOf(text, kind));
  }
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::vector<std::string> ports;
  for (const int number : numbers) {
    if (number > 0) {
      ports.push_back(kind + std::to_string(number));
    }
  }
  return ports;
}

}  // namespace

std::vector<std::string> SerialPorts() { return PortsOf("HARDWARE\\DEVICEMAP\\SERIALCOMM", "COM"); }

std::vector<std::string> ParallelPorts() { return PortsOf("HARDWARE\\DEVICEMAP\\PARALLEL PORTS", "LPT"); }

std::vector<vexo::UsbPrinter> UsbPrinters() {
  std::error_code error;
  std::vector<vexo::UsbPrinter> printers = vexo::ListUsbPrinters(&error);
  Require(error, "cannot list the USB printers");
  for (vexo::UsbPrinter& printer : printers) {
    for (std::string* const text : {&printer.serial, &printer.name, &printer.ids, &printer.port, &printer.location}) {
      *text = Utf8FromAnsi(*text);
    }
  }
  return printers;
}

}  // namespace vexoctl
