#include "support/scripted_drivers.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "port/buffer_port.h"
#include "port/device_port.h"
#include "port/device_uri.h"
#include "port/port_driver.h"
#include "support/allocation_faults.h"
#include "vexo/error.h"

namespace vexo {
namespace {

std::mutex g_mutex;
test::DriverScript g_script;
std::vector<std::string> g_calls;
std::atomic<int32_t> g_driver_count{0};
std::atomic<int32_t> g_open{0};

class FakeDriver : public DevicePort {
 public:
  explicit FakeDriver(const char* name) : DevicePort({1, 2, 3, 4, 5, 6}), name_(name) { ++g_driver_count; }
  ~FakeDriver() override {
    g_open -= open_ ? 1 : 0;
    --g_driver_count;
  }

  int32_t Configure(const char* uri) override {
    const int32_t result = Record("Configure ", uri).configure_result;
    DeviceUri parsed;
    if (result == VEXO_OK && ParseDeviceUri(&parsed, uri) == VEXO_OK) {
      SetConfigured(parsed);
    }
    return result;
  }

  int32_t Open() override {
    const test::DriverScript script = Record("Open");
    return MarkOpen(script.on_open ? script.on_open() : script.open_result);
  }

  int32_t OpenDeviceOfClass(uint32_t first_class, uint32_t class_count) override {
    const test::UncountedAllocations uncounted;
    const std::string classes = std::to_string(first_class) + ", " + std::to_string(class_count);
    return MarkOpen(Record("OpenDeviceOfClass ", classes.c_str()).open_result);
  }

  int32_t Close() override {
    g_open -= open_.exchange(false) ? 1 : 0;
    Record("Close");
    return 5;
  }

  int32_t Abort() override {
    SetAborted();
    return VEXO_OK;
  }

  int32_t CheckOpen() override { return open_ ? VEXO_OK : VEXO_ERROR_IO_NOT_OPEN; }

  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override {
    return Transfer("Write", length, [&](const test::DriverScript& script) {
      *written = length;
      return script.on_write ? script.on_write(buffer + offset, length) : VEXO_OK;
    });
  }

  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override {
    return Transfer("Read", length, [&](const test::DriverScript& script) -> int32_t {
      *read = script.on_read ? script.on_read(buffer + offset, length) : 0;
      if (script.read_failure != VEXO_OK) {
        return script.read_failure;
      }
      return *read < length ? VEXO_ERROR_IO_READ_TIMEOUT : VEXO_OK;
    });
  }

  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override {
    return Transfer("ReadAvailable", to - from, [&](const test::DriverScript& script) {
      *read = script.on_read ? script.on_read(buffer + from, to - from) : 0;
      return int32_t{VEXO_OK};
    });
  }

 private:
  test::DriverScript Record(const char* operation, const char* details = "", bool recorded = true) const {
    const test::UncountedAllocations uncounted;
    const std::string call = std::string(name_) + " " + operation + details;
    test::DriverScript script;
    {
      const std::lock_guard<std::mutex> guard(g_mutex);
      script = g_script;
      if (recorded) {
        g_calls.push_back(call);
      }
    }
    if (script.during) {
      script.during(call);
    }
    return script;
  }

  int32_t MarkOpen(int32_t result) {
    g_open += result == VEXO_OK && !open_.exchange(true) ? 1 : 0;
    return result;
  }

  template <typename Operation>
  int32_t Transfer(const char* name, uint32_t length, Operation operation) const {
    char details[16];
    (void)std::snprintf(details, sizeof(details), " %u", length);
    const test::DriverScript script = Record(name, details, false);
    if (IsAborted()) {
      return VEXO_OK;
    }
    const test::UncountedAllocations uncounted;
    return open_ ? operation(script) : VEXO_ERROR_IO_NOT_OPEN;
  }

  const char* const name_;
  std::atomic<bool> open_{false};
};

}  // namespace

namespace test {

void SetDriverScript(DriverScript script) {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_script = std::move(script);
  g_calls = {};  // Also releases the capacity.
}

std::vector<std::string> DriverCalls() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_calls;
}

int32_t DriverCount() { return g_driver_count; }

int32_t OpenDevices() { return g_open; }

}  // namespace test

std::unique_ptr<PortDriver> MakePortDriver(int32_t kind, bool* known) {
  static constexpr const char* kNames[] = {"COM", "LPT", "USB", "NET", nullptr, "BT"};
  *known = kind != VEXO_PORT_FILE;
  if (!*known) {
    return nullptr;
  }
  if (kind == VEXO_PORT_BUFFER) {
    return std::unique_ptr<PortDriver>(new (std::nothrow) BufferPort);
  }
  return std::unique_ptr<PortDriver>(new (std::nothrow) FakeDriver(kNames[kind]));
}

}  // namespace vexo
