// Fixture: an open port on a named pipe instead of a device file, in virtual time. The test acts as the printer.
#ifndef VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_
#define VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/windows/scoped_handle.h"
#include "port/bounded_text.h"
#include "port/windows/usb_port.h"
#include "windows/driver_port_test.h"
#include "windows/virtual_time.h"

namespace vexo::test {

using Milliseconds = std::vector<uint32_t>;

// A message pipe, so each write arrives as one packet. With kNoRoom, a write completes only when the printer reads, as
// with a printer that is out of paper.
class PrinterPipe {
 public:
  static constexpr DWORD kRoom = 64 * 1024;
  static constexpr DWORD kNoRoom = 1;

  explicit PrinterPipe(DWORD room = kRoom, const std::string& path = NewPath())
      : path_(path),
        end_(CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE,
                              PIPE_UNLIMITED_INSTANCES, kRoom, room, 0, nullptr)) {
    EXPECT_TRUE(end_.valid());
  }

  const std::string& path() const { return path_; }

  // Sends one packet, which may be empty.
  void Send(const std::string& packet) {
    DWORD written = 0;
    EXPECT_NE(WriteFile(end_.get(), packet.data(), static_cast<DWORD>(packet.size()), &written, nullptr), 0);
  }

  // Returns the next packet from the host; empty if there is none.
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

class UsbPipePort : public UsbPort {
 public:
  explicit UsbPipePort(std::string path, bool gated = false) : path_(std::move(path)) { read_gated_ = gated ? 1 : 0; }

 protected:
  int32_t ResolveDevicePath() override {
    CopyText(device_path_, sizeof(device_path_), path_.c_str());
    return 0;
  }

 private:
  const std::string path_;
};

class FilePortFixture : public ::testing::Test {
 protected:
  FilePortFixture() { Time() = {}; }
  ~FilePortFixture() override { Release(); }

  void Release() {
    if (port_ != nullptr) {
      EXPECT_EQ(ClosePort(std::exchange(port_, nullptr)), VEXO_OK);
    }
  }

  // Replaces the port by one with this driver.
  void Make(std::unique_ptr<PortDriver> driver, uint32_t kind = VEXO_PORT_USB) {
    Time() = {};
    Release();
    port_ = MakePort(kind, std::move(driver));
  }

  // Opens a port on a new pipe.
  void OpenOnPipe(DWORD room = PrinterPipe::kRoom, bool gated = false) {
    printer_ = std::make_unique<PrinterPipe>(room);
    Make(std::make_unique<UsbPipePort>(printer_->path(), gated));
    ASSERT_EQ(port_->Configure(port_, "vexo:/dev/bus/USB/DEVICE"), VEXO_OK);
    ASSERT_EQ(port_->Open(port_), VEXO_OK);
  }

  // During the port's next wait, the printer sends a packet, reads one or is unplugged.
  void SendLater(uint32_t after_ms, const std::string& packet, bool too_late = false) {
    Time().wait_events.push_back({after_ms, [=] { printer_->Send(packet); }, too_late});
  }
  void ReceiveLater(uint32_t after_ms, bool too_late = false) {
    Time().wait_events.push_back({after_ms, [=] { received_ += printer_->Receive(); }, too_late});
  }
  void UnplugLater() {
    Time().wait_events.push_back({1, [this] { printer_->Unplug(); }});
  }

  VexoPort* port_ = nullptr;
  std::unique_ptr<PrinterPipe> printer_;
  std::string received_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_
