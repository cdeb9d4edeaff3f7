// Ports and handles used by several threads. The tests also serve ThreadSanitizer.
#include <atomic>
#include <future>
#include <thread>

#include "core/driver_test.h"
#include "port/port_factory.h"
#include "port/port_object.h"
#include "support/threads.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

bool IsOpenOrClosed(int32_t result) { return result == 0 || result == -6 || result == -308 || result == -309; }

int32_t WriteByte(VexoPort* port, uint32_t* written = nullptr) {
  const uint8_t byte = 0;
  return port->Write(port, &byte, 0, 1, written);
}

// Writes single bytes on another thread until a write fails or writes nothing. Returns the last result.
std::future<int32_t> StartWriting(VexoPort* port) {
  std::promise<void> started;
  std::future<void> has_started = started.get_future();
  std::future<int32_t> result = std::async(std::launch::async, [port, started = std::move(started)]() mutable {
    uint32_t written = 0;
    int32_t last = WriteByte(port, &written);
    started.set_value();
    while (last == 0 && written > 0) {
      last = WriteByte(port, &written);
    }
    return last;
  });
  has_started.wait();
  return result;
}

using Threads = DriverTest;

TEST_F(Threads, PortIsClosedDuringATransfer) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(0, ScannerGunPortOpen(&handle_, round % 2 == 0 ? "NET,10.0.0.5" : "BUF"));
    VexoPort* const port = handle_.port;
    ASSERT_EQ(0, port->Open(port));
    std::future<int32_t> writer = StartWriting(port);
    EXPECT_EQ(0, DiskPortOpen(&handle_, "USB"));
    EXPECT_PRED1(IsOpenOrClosed, writer.get());
    EXPECT_EQ(-6, WriteByte(port));
  }
}

// A function sees the handle closed or open, with the old port or the new one.
TEST_F(Threads, HandleIsReopenedWhileItIsUsed) {
  ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  std::atomic<bool> done{false};
  std::atomic<int> unexpected{0};
  std::thread user([&] {
    while (!done) {
      uint32_t width = 0;
      const int32_t result = GetPrintWidth(&handle_, &width);
      unexpected += IsOpenOrClosed(result) || result == -332 ? 0 : 1;
    }
  });
  for (int round = 0; round < 1000; ++round) {
    EXPECT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  }
  done = true;
  user.join();
  EXPECT_EQ(0, unexpected);
}

// The handle keeps one of the ports; all others are freed.
TEST_F(Threads, SeveralThreadsOpenPortsInOneHandle) {
  RunOnThreads(3, [&](int thread) {
    for (int round = 0; round < 500; ++round) {
      const char* const text = thread == 0 ? "COM1,9600" : thread == 1 ? "NET,10.0.0.5" : "";
      const int32_t result = ScannerGunPortOpen(&handle_, text);
      EXPECT_TRUE(result == (thread == 2 ? -301 : 0) || (thread == 0 && result == -6)) << result;
    }
  });
  EXPECT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  EXPECT_EQ(expected_drivers_ + 1, DriverCount());
  EXPECT_EQ(1, handle_.portOpen);
}

}  // namespace
}  // namespace vexo::test
