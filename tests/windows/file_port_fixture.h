// An open port object on a pipe, in virtual time.
#ifndef VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_
#define VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "port/port_object.h"
#include "windows/port_calls.h"
#include "windows/printer_pipe.h"
#include "windows/virtual_time.h"

namespace vexo::test {

inline constexpr char kUsbUri[] = "vexo:/dev/bus/USB/DEVICE";

using Milliseconds = std::vector<uint32_t>;

class FilePortTest : public ::testing::Test {
 protected:
  FilePortTest() { Time() = {}; }
  ~FilePortTest() override { Release(); }

  void Release() {
    if (port_ != nullptr) {
      EXPECT_EQ(ClosePort(std::exchange(port_, nullptr)), VEXO_OK);
    }
  }

  // Puts `driver` behind a port object in place of the last one.
  void Make(std::unique_ptr<PortDriver> driver, uint32_t kind = VEXO_PORT_USB) {
    PortLockReference lock;
    Release();
    ASSERT_EQ(lock.Take(), 0);
    port_ = MakePortObject(kind, std::move(driver), std::move(lock));
  }

  // Opens a port of this kind on a pipe of its own.
  template <typename Port, typename... Arguments>
  void OpenOnPipe(DWORD room = PrinterPipe::kRoom, Arguments... arguments) {
    Time() = {};
    printer_ = std::make_unique<PrinterPipe>(room);
    Make(std::make_unique<Port>(printer_->path(), arguments...));
    ASSERT_EQ(port_->Configure(port_, kUsbUri), VEXO_OK);
    ASSERT_EQ(port_->Open(port_), VEXO_OK);
  }

  // Lets the printer send a packet during the next wait of the port.
  void SendLater(uint32_t after_ms, const std::string& packet, bool too_late = false) {
    Time().happenings.push_back({after_ms, [=] { printer_->Send(packet); }, too_late});
  }

  VexoPort* port_ = nullptr;
  std::unique_ptr<PrinterPipe> printer_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_FILE_PORT_FIXTURE_H_
