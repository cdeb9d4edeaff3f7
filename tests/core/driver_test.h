// Fixture for tests with scripted drivers: starts with the default script, and checks for open devices and leaks.
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
    DiskPortOpen(&handle_, "");  // Releases the port.
    ExpectNothingLeaked();
  }

  void ExpectNothingLeaked() const {
    EXPECT_EQ(0U, PortLockReferenceCount());
    EXPECT_EQ(0, OpenDevices());
    EXPECT_EQ(expected_drivers_, DriverCount());
  }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  int32_t expected_drivers_ = DriverCount();  // Bluetooth drivers are closed, but kept.
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_DRIVER_TEST_H_
