// ScannerGunPortOpen, ScannerPortOpen and DiskPortOpen.
#include "core/driver_test.h"

namespace vexo::test {
namespace {

using Calls = std::vector<std::string>;
using Export = int32_t (*)(VexoPrinterHandle*, const char*);
constexpr Export kExports[] = {DiskPortOpen, ScannerPortOpen, ScannerGunPortOpen};

using SpecialPorts = DriverTest;

TEST_F(SpecialPorts, EachOpensItsDevices) {
  static const struct {
    Export open;
    const char* text;
    int32_t open_result;
    uint32_t kind;
    const char* last_call;
  } kRows[] = {
      {DiskPortOpen, "USB", 0, VEXO_PORT_USB, "USB OpenDeviceOfClass 0, 1"},
      {ScannerPortOpen, "USB", 0, VEXO_PORT_USB, "USB OpenDeviceOfClass 6, 1"},
      {ScannerGunPortOpen, "USB", 0, VEXO_PORT_USB, "USB OpenDeviceOfClass 1, 5"},
      {ScannerGunPortOpen, "COM1,9600", 0, VEXO_PORT_SERIAL, "COM Open"},
      // The caller opens these ports.
      {ScannerGunPortOpen, "LPT1", 5, VEXO_PORT_PARALLEL, "LPT Configure vexo:/dev/bus/LPT/LPT1"},
      {ScannerGunPortOpen, "NET,1.2,1", 5, VEXO_PORT_NET, "NET Configure vexo:/dev/bus/NET/DEVICE?ip=1.2+port=1"},
      {ScannerGunPortOpen, "BT,0A,1", 5, VEXO_PORT_BLUETOOTH, "BT Configure vexo:/dev/bus/BT/DEVICE?address=0A+pin=1"},
      {ScannerGunPortOpen, "BUF", 5, VEXO_PORT_BUFFER, "BT Close"},
      // If the device cannot be opened, the handle holds the closed port.
      {DiskPortOpen, "USB", -321, VEXO_PORT_USB, "USB OpenDeviceOfClass 0, 1"},
      {ScannerGunPortOpen, "COM1,9600", 2, VEXO_PORT_SERIAL, "COM Open"},
      {DiskPortOpen, "BUF", -372, VEXO_PORT_BUFFER, "COM Close"},  // A buffer port has no device file.
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    SetDriverScript({0, row.open_result});
    const bool opens = row.open_result == 0 || row.open_result == 5;
    EXPECT_EQ(opens ? 0 : row.open_result, row.open(&handle_, row.text));
    EXPECT_EQ(opens ? 1 : 0, handle_.portOpen);
    EXPECT_EQ(row.kind, handle_.port->kind);
    EXPECT_EQ(row.last_call, DriverCalls().back());
    EXPECT_EQ(1U, PortLockReferenceCount());
  }
  ++expected_drivers_;  // The Bluetooth driver is kept.
}

TEST_F(SpecialPorts, ReopeningClosesTheOldPortFirst) {
  ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  int open_while_changing = 0;
  SetDriverScript(
      {0, 0, [&](const std::string& call) { open_while_changing += call != "COM Close" ? handle_.portOpen : 0; }});
  ASSERT_EQ(0, DiskPortOpen(&handle_, "USB"));
  EXPECT_EQ((Calls{"COM Close", "USB Configure vexo:/dev/bus/USB/DEVICE", "USB OpenDeviceOfClass 0, 1"}),
            DriverCalls());
  EXPECT_EQ(0, open_while_changing);
}

TEST_F(SpecialPorts, FailureToCreateTheNewPortLeavesNone) {
  const std::tuple<const char*, int32_t, int32_t> kRows[] = {
      {nullptr, 0, -301}, {"FILE,x", 0, -4}, {"NET,1.2.3.4", -1, -1}};
  VexoPrinterHandle wrong = {559, nullptr, nullptr, 0};
  for (const Export open : kExports) {
    EXPECT_EQ(-6, open(nullptr, "USB"));
    EXPECT_EQ(-6, open(&wrong, "USB"));
    for (const auto& [text, configure_result, code] : kRows) {
      ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
      SetDriverScript({configure_result});
      EXPECT_EQ(code, open(&handle_, text));
      EXPECT_EQ("COM Close", DriverCalls().front());
      EXPECT_EQ(nullptr, handle_.port);
      EXPECT_EQ(0, handle_.portOpen);
      EXPECT_EQ(0U, PortLockReferenceCount());
      SetDriverScript({});
    }
  }
  EXPECT_EQ(nullptr, wrong.port);
}

TEST_F(SpecialPorts, PortObjectOfTheHostIsClosedButNotFreed) {
  VexoPrinterHandle other = handle_;
  ASSERT_EQ(0, DiskPortOpen(&other,
                            "USB"));  // Holds a reference to the lock, which must not be released with the host's port.
  for (const uint32_t magic : {VEXO_PORT_MAGIC, VEXO_PORT_MAGIC + 1}) {
    DiskPortOpen(&handle_, "");
    ScriptedPort hosts;
    hosts.magic = magic;
    handle_ = OpenHandle(&hosts);
    EXPECT_EQ(0, ScannerPortOpen(&handle_, "USB"));
    EXPECT_EQ(2U, PortLockReferenceCount());
    // A record without the magic is not touched.
    EXPECT_EQ(magic == VEXO_PORT_MAGIC ? Calls{"Close()"} : Calls{}, hosts.Operations());
  }
  ScriptedPort without_close;
  without_close.VexoPort::Close = nullptr;
  DiskPortOpen(&handle_, "");
  handle_ = OpenHandle(&without_close);
  EXPECT_EQ(0, ScannerPortOpen(&handle_, "USB"));
  DiskPortOpen(&other, "");
}

}  // namespace
}  // namespace vexo::test
