// The driver table of the test programs: buffer ports as in the product, no driver for files, and for every other kind
// a fake device that keeps a record of what it is asked.
#ifndef VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
#define VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vexo::test {

// How all fake devices behave from now on, whatever thread asks them.
//
// A fake device takes every byte it is written and never sends any (-332). It fails transfers with -309 while it is
// closed, and ends them with 0 bytes once it was aborted.
struct DriverScript {
  int32_t configure_result = 0;
  int32_t open_result = 0;           // Of Open.
  int32_t open_by_class_result = 0;  // Of OpenDeviceOfClass.
  int32_t close_result = 0;

  // Called during each operation with its entry in the record.
  std::function<void(const std::string& call)> during = {};
};

// Forgets the record.
void SetDriverScript(DriverScript script);

// The operations since then, "NET Configure vexo:/dev/bus/NET/DEVICE?ip=10.0.0.5", "USB OpenDeviceOfClass 1, 5",
// "COM Open". Transfers are not kept: there may be very many.
std::vector<std::string> DriverCalls();

// Fake drivers that exist now, and fake devices that are open.
int32_t LivingDrivers();
int32_t OpenDevices();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
