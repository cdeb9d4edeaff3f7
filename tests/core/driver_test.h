// Tests on the scripted drivers: each starts with the plain script, and leaves nothing open and nothing held.
#ifndef VEXO_TESTS_CORE_DRIVER_TEST_H_
#define VEXO_TESTS_CORE_DRIVER_TEST_H_

#include "core/core_test.h"
#include "port/handle_port.h"
#include "port/port_lock.h"
#include "support/scripted_drivers.h"

namespace vexo::test {

class DriverTest : public ::testing::Test {
 protected:
  DriverTest() { SetDriverScript({}); }
  ~DriverTest() override {
    SetDriverScript({});
    DiskPortOpen(&handle_, "");  // Gives the port back.
    ExpectNothingHeld();
  }

  void ExpectNothingHeld() const {
    EXPECT_EQ(0U, PortLockReferenceCount());
    EXPECT_EQ(0, OpenDevices());
    EXPECT_EQ(drivers_to_stay_, LivingDrivers());
  }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  int32_t drivers_to_stay_ = LivingDrivers();  // Those of Bluetooth ports are closed, but kept.
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_DRIVER_TEST_H_
