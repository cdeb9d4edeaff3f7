// Fixture: a port object with a driver that the test supplies.
#ifndef VEXO_TESTS_WINDOWS_DRIVER_PORT_TEST_H_
#define VEXO_TESTS_WINDOWS_DRIVER_PORT_TEST_H_

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "port/port_object.h"
#include "windows/port_calls.h"

namespace vexo::test {

inline VexoPort* MakePort(uint32_t kind, std::unique_ptr<PortDriver> driver) {
  PortLockReference lock;
  EXPECT_EQ(lock.Take(), 0);
  return MakePortObject(kind, std::move(driver), std::move(lock));
}

template <typename Driver, uint32_t kKind>
class DriverPortTest : public ::testing::Test {
 protected:
  DriverPortTest() : driver_(new Driver), port_(MakePort(kKind, std::unique_ptr<PortDriver>(driver_))) {}
  ~DriverPortTest() override {
    EXPECT_EQ(ClosePort(port_), kKind == VEXO_PORT_BLUETOOTH ? VEXO_ERROR_NOT_SUPPORTED_PRINTER : VEXO_OK);
  }

  Driver* const driver_;
  VexoPort* const port_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_DRIVER_PORT_TEST_H_
