// The driver table of the test programs: real buffer ports, no driver for files, and for every other kind a fake device
// that records its calls.
#ifndef VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
#define VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vexo::test {

// Behaviour of all fake devices. By default they accept every byte and send none: Read gives -332, ReadAvailable 0
// bytes. Transfers fail with -309 while the device is closed and give 0 bytes after Abort. Close works, but returns 5.
struct DriverScript {
  int32_t configure_result = 0;
  int32_t open_result = 0;
  // Called during each operation with its name, for example "NET Open" or "NET Write 21".
  std::function<void(const std::string& call)> during = {};
  std::function<int32_t()> on_open = {};  // Replaces open_result.
  std::function<int32_t(const uint8_t* bytes, uint32_t length)> on_write = {};
  std::function<uint32_t(uint8_t* buffer, uint32_t room)> on_read = {};  // Returns the number of bytes.
  int32_t read_failure = 0;                                              // If not 0, the result of Read.
};

// Also clears the recorded calls.
void SetDriverScript(DriverScript script);

// Operations since SetDriverScript, without transfers: "USB OpenDeviceOfClass 1, 5", "COM Open".
std::vector<std::string> DriverCalls();

// Existing fake drivers, and fake devices that are open.
int32_t DriverCount();
int32_t OpenDevices();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_DRIVERS_H_
