// The driver table of the test programs: buffer ports as in the product, no driver for files, and for every other kind
// a fake device that keeps a record of what it is asked.
#ifndef VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
#define VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vexo::test {

// How all fake devices behave from now on. Unless told otherwise they take every byte and never send any (-332; 0 from
// ReadAvailable). They fail transfers with -309 while they are closed and end them with 0 bytes once aborted. Closing
// works, but says 5.
struct DriverScript {
  int32_t configure_result = 0;
  int32_t open_result = 0;
  // Called during each operation, with its name, "NET Open", "NET Write 21".
  std::function<void(const std::string& call)> during = {};
  std::function<int32_t()> on_open = {};  // Instead of open_result.
  std::function<int32_t(const uint8_t* bytes, uint32_t length)> on_write = {};
  std::function<uint32_t(uint8_t* buffer, uint32_t room)> on_read = {};  // Gives the bytes sent; 0: none.
  int32_t read_failure = 0;                                              // What Read ends with instead.
};

// Forgets the record.
void SetDriverScript(DriverScript script);

// The operations since then but for the transfers: "USB OpenDeviceOfClass 1, 5", "COM Open".
std::vector<std::string> DriverCalls();

// Fake drivers that exist now, and fake devices that are open.
int32_t LivingDrivers();
int32_t OpenDevices();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
