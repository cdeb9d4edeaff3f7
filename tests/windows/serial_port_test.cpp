// Serial ports on a real line. run_serial_tests.sh connects COM5 (host) with COM6 (printer).
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstring>
#include <future>
#include <string>

#include "platform/windows/scoped_handle.h"
#include "port/windows/serial_port.h"
#include "support/threads.h"
#include "windows/driver_port_test.h"

namespace vexo::test {
namespace {

constexpr char kUri[] = "vexo:/dev/bus/COM/COM5?baudrate=";

// Reads the line's settings from the system after the port has set them.
class ObservedSerialPort : public SerialPort {
 public:
  using SerialPort::FillLine;

  DCB line = {};
  COMMTIMEOUTS limits = {};
  mutable std::atomic<bool> reads{false};

 protected:
  int32_t SetUpDevice(HANDLE device) override {
    const int32_t result = SerialPort::SetUpDevice(device);
    GetCommState(device, &line);
    GetCommTimeouts(device, &limits);
    return result;
  }
  uint32_t ReadPacketSize(uint32_t length) const override {
    reads = true;
    return SerialPort::ReadPacketSize(length);
  }
};

// The printer's end of the line.
class Printer {
 public:
  Printer() : end_(CreateFileA("\\\\.\\COM6", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_TRUE(end_.valid()) << "is COM6 linked? error " << GetLastError();
  }

  void Send(const std::string& bytes) {
    DWORD written = 0;
    EXPECT_NE(WriteFile(end_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr), 0);
    EXPECT_EQ(written, bytes.size());
  }

 private:
  platform::ScopedHandle end_;
};

class SerialPortTest : public DriverPortTest<ObservedSerialPort, VEXO_PORT_SERIAL> {
 protected:
  int32_t Open(const std::string& settings) {
    port_->Close(port_);
    const int32_t configured = port_->Configure(port_, (kUri + settings).c_str());
    return configured == VEXO_OK ? port_->Open(port_) : configured;
  }
};

constexpr char kPlain[] = "115200+parity=N+bytesize=8+stopbits=1+flowcontrol=N";

TEST_F(SerialPortTest, SetsUpTheLine) {
  const struct {
    const char* settings;
    DWORD speed;
    int byte_size, parity, stop_bits;
    bool cts, dsr, xon_xoff;
  } rows[] = {{"9600+parity=O+bytesize=7+stopbits=2+flowcontrol=X", 9600, 7, 1, 2, false, false, true},
              {"115200+parity=e+bytesize=8bits+stopbits=1+flowcontrol=C", 115200, 8, 2, 0, true, false, false},
              {"1200+parity=N+bytesize=8+stopbits=1+flowcontrol=d", 1200, 8, 0, 0, false, true, false},
              {"19200+parity=N+bytesize=8+stopbits=1+flowcontrol=P", 19200, 8, 0, 0, true, true, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.settings);
    ASSERT_EQ(Open(row.settings), VEXO_OK);
    const DCB& line = driver_->line;
    EXPECT_EQ(line.BaudRate, row.speed);
    EXPECT_EQ(line.StopBits, row.stop_bits);
    EXPECT_EQ(line.fOutxCtsFlow != 0, row.cts);
    EXPECT_EQ(line.fOutX != 0, row.xon_xoff);
    EXPECT_EQ(line.fInX != 0, row.xon_xoff);

    // A terminal has no DSR line and no parity, so these fields are checked in the structure passed to the system.
    for (const DWORD found : {0U, 1U}) {
      DCB given = {};
      given.fOutxCtsFlow = given.fOutxDsrFlow = given.fOutX = given.fInX = given.fNull = found;
      given.fDtrControl = found == 1 ? DTR_CONTROL_HANDSHAKE : DTR_CONTROL_DISABLE;
      given.fRtsControl = found == 1 ? RTS_CONTROL_TOGGLE : RTS_CONTROL_DISABLE;
      const DCB before = given;
      driver_->FillLine(&given);
      const bool hardware = row.cts || row.dsr;
      EXPECT_EQ(given.ByteSize, row.byte_size);
      EXPECT_EQ(given.Parity, row.parity);
      EXPECT_EQ(given.fOutxCtsFlow != 0, row.cts);
      EXPECT_EQ(given.fOutxDsrFlow != 0, row.dsr);
      EXPECT_EQ(given.fOutX + given.fInX, row.xon_xoff ? 2U : 0U);
      EXPECT_EQ(given.fDtrControl,
                hardware ? static_cast<DWORD>(row.dsr ? DTR_CONTROL_ENABLE : DTR_CONTROL_DISABLE) : before.fDtrControl);
      EXPECT_EQ(given.fRtsControl, hardware ? static_cast<DWORD>(row.cts ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_DISABLE)
                                            : before.fRtsControl);
      EXPECT_EQ(given.fNull, found) << "must stay unchanged";
    }
  }
}

// The time limits allow for a whole chunk at the line's speed, unless the caller has set them.
TEST_F(SerialPortTest, TimeLimitsReachTheSystem) {
  const std::pair<const char*, DWORD> rows[] = {{"9600", 2000}, {"4800", 3600}, {"2400", 7800}, {"1200", 16200}};
  for (const auto& [speed, write_constant] : rows) {
    ASSERT_EQ(Open(speed + std::string(kPlain).substr(6)), VEXO_OK);
    EXPECT_EQ(driver_->limits.WriteTotalTimeoutConstant, write_constant);
    VexoPortTimeouts limits = {};
    port_->GetTimeouts(port_, &limits);
    EXPECT_EQ(limits.writeConstant, write_constant);
  }
  ASSERT_EQ(port_->SetTimeouts(port_, {11, 12, 13, 14, 15, 16}), VEXO_OK);
  ASSERT_EQ(Open(kPlain), VEXO_OK);
  const COMMTIMEOUTS expected = {11, 12, 13, 14, 15};
  EXPECT_EQ(memcmp(&driver_->limits, &expected, sizeof(expected)), 0);
}

TEST_F(SerialPortTest, RefusalsLeaveThePortClosed) {
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_SETTING);
  EXPECT_EQ(port_->Configure(port_, "COM5"), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(Open("9601+parity=N+bytesize=8+stopbits=1+flowcontrol=N"), VEXO_ERROR_SERIAL_BAUDRATE);
  EXPECT_EQ(Open("9600+parity=q+bytesize=8+stopbits=1+flowcontrol=N"), VEXO_ERROR_IO_SET_ATTRIBUTES);
  EXPECT_EQ(port_->CheckOpen(port_), VEXO_ERROR_IO_NOT_OPEN);
  ASSERT_EQ(Open(kPlain), VEXO_OK) << "the failed attempts released the device";
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
  uint32_t returned = 0;
  EXPECT_EQ(port_->Control(port_, 1, nullptr, nullptr, 0, nullptr, 0, &returned), VEXO_ERROR_NOT_IMPLEMENTED);
  port_->Close(port_);
  ASSERT_EQ(port_->Configure(port_, "vexo:/dev/bus/COM/COM255?baudrate=9600+flowcontrol=N"), VEXO_OK);
  EXPECT_EQ(port_->Open(port_), ERROR_FILE_NOT_FOUND);

  // Not a serial line.
  platform::ScopedHandle pipe(
      CreateNamedPipeA("\\\\.\\pipe\\vexo_no_line", PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED, 0, 1, 0, 0, 0, nullptr));
  ASSERT_EQ(port_->Configure(port_, "vexo:/dev/bus/COM/pipe\\vexo_no_line?baudrate=9600+flowcontrol=N"), VEXO_OK);
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_GET_ATTRIBUTES);
}

// Also when the line's own time limit ends the read.
TEST_F(SerialPortTest, PartialAnswersAreReturned) {
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 0, 50, 10, 2000, 0}), VEXO_OK);
  ASSERT_EQ(Open(kPlain), VEXO_OK);
  EXPECT_EQ(Read(port_, 5), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  Printer printer;
  printer.Send("ab");
  EXPECT_EQ(Read(port_, 5), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 2, "ab"));
  EXPECT_EQ(ReadAvailable(port_, 5), Reading(VEXO_OK, 0, ""));
  printer.Send("xyz");
  EXPECT_EQ(ReadAvailable(port_, 2), Reading(VEXO_OK, 2, "xy"));
  EXPECT_EQ(ReadAvailable(port_, 2), Reading(VEXO_OK, 1, "z"));
}

// A download closes its port at the end, while a job monitor may be reading from it.
TEST_F(SerialPortTest, ClosingEndsTheReadOfAnotherThread) {
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 0, 300'000, 10, 2000, 0}), VEXO_OK);
  ASSERT_EQ(Open(kPlain), VEXO_OK);
  std::future<Reading> late = std::async(std::launch::async, [this] { return Read(port_, 5); });
  ASSERT_TRUE(Eventually([this] { return driver_->reads.load(); }));
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_GT(std::get<0>(late.get()), 0) << "a system error";
  Printer printer;
  ASSERT_EQ(Open(kPlain), VEXO_OK);
  printer.Send("xyz");
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_OK, 3, "xyz"));
}

}  // namespace
}  // namespace vexo::test
