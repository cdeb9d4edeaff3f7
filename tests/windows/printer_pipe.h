// A named pipe in the place of a printer's device file, the test being the printer; and ports on it.
#ifndef VEXO_TESTS_WINDOWS_PRINTER_PIPE_H_
#define VEXO_TESTS_WINDOWS_PRINTER_PIPE_H_

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/windows/scoped_handle.h"
#include "port/bounded_text.h"
#include "port/usb_port.h"

namespace vexo::test {

// Keeps the boundaries of what either side writes at once. A pipe without room takes a write only when the printer
// reads, as a printer that is out of paper does.
class PrinterPipe {
 public:
  static constexpr DWORD kRoom = 64 * 1024;

  explicit PrinterPipe(DWORD room = kRoom, const std::string& path = NewPath())
      : path_(path),
        end_(CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE,
                              PIPE_UNLIMITED_INSTANCES, kRoom, room, 0, nullptr)) {
    EXPECT_TRUE(end_.valid());
  }

  const std::string& path() const { return path_; }

  // One packet to the host; it may be empty.
  void Send(const std::string& packet) {
    DWORD written = 0;
    EXPECT_NE(WriteFile(end_.get(), packet.data(), static_cast<DWORD>(packet.size()), &written, nullptr), 0);
  }

  // What the host wrote at once; empty when there is nothing.
  std::string Receive() {
    DWORD length = 0;
    PeekNamedPipe(end_.get(), nullptr, 0, nullptr, nullptr, &length);
    std::string packet(length, '\0');
    if (length > 0) {
      EXPECT_NE(ReadFile(end_.get(), packet.data(), length, &length, nullptr), 0);
    }
    return packet;
  }

  void Unplug() { end_.Reset(); }

 private:
  static std::string NewPath() {
    static int number = 0;
    return "\\\\.\\pipe\\vexo_printer_" + std::to_string(GetCurrentProcessId()) + '_' + std::to_string(++number);
  }

  const std::string path_;
  platform::ScopedHandle end_;
};

// A device file that passes every request on to the system as it is.
class PipePort : public FilePort {
 public:
  explicit PipePort(const std::string& path) : FilePort(Mode::kOverlapped) {
    CopyText(device_path_, sizeof(device_path_), path.c_str());
  }

  int32_t Configure(const char* uri) override {
    DeviceUri parsed;
    const int32_t result = ParseDeviceUri(&parsed, uri);
    if (result == 0) {
      SetConfigured(parsed);
    }
    return result;
  }
};

class UsbPipePort : public UsbPort {
 public:
  explicit UsbPipePort(const std::string& path, bool gated = false) : path_(path) { read_gated_ = gated ? 1 : 0; }

 protected:
  int32_t ResolveDevicePath() override {
    CopyText(device_path_, sizeof(device_path_), path_.c_str());
    return 0;
  }

 private:
  const std::string path_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_PRINTER_PIPE_H_
