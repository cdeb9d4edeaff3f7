// What hosts do from several threads at once. These tests are there for ThreadSanitizer as much as for their
// assertions.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "port/port_factory.h"
#include "port/port_lock.h"
#include "port/port_object.h"
#include "support/scripted_drivers.h"
#include "vexo/extend.h"

namespace vexo {
namespace {

bool IsOpenOrClosed(int32_t result) { return result == 0 || result == -6 || result == -308 || result == -309; }

int32_t WriteByte(VexoPort* port, uint32_t* written = nullptr) {
  const uint8_t byte = 0;
  return port->Write(port, &byte, 0, 1, written);
}

// Writes on a thread of its own, byte by byte, until a write fails or takes nothing; gives the last result.
class Writer {
 public:
  explicit Writer(VexoPort* port) : result_(std::async(std::launch::async, [this, port] { return Write(port); })) {
    started_.get_future().wait();
  }

  int32_t Result() { return result_.get(); }

 private:
  int32_t Write(VexoPort* port) {
    uint32_t written = 0;
    int32_t result = WriteByte(port, &written);
    started_.set_value();
    while (result == 0 && written > 0) {
      result = WriteByte(port, &written);
    }
    return result;
  }

  std::promise<void> started_;
  std::future<int32_t> result_;
};

class Threads : public ::testing::Test {
 protected:
  void SetUp() override { test::SetDriverScript({}); }

  void TearDown() override {
    DiskPortOpen(&handle_, "");
    EXPECT_EQ(0U, PortLockReferenceCount());
    EXPECT_EQ(0, test::OpenDevices());
    EXPECT_EQ(drivers_before_, test::LivingDrivers());
  }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  const int32_t drivers_before_ = test::LivingDrivers();
};

TEST_F(Threads, PortsAreOpenedAndClosedOnAnyThread) {
  std::atomic<int> failures{0};
  std::vector<std::thread> threads(8);
  for (size_t i = 0; i < threads.size(); ++i) {
    threads[i] = std::thread([&failures, i] {
      const char* const text = i % 2 == 0 ? "NET,10.0.0.5" : "BUF";
      for (int round = 0; round < 100; ++round) {
        VexoPort* port = nullptr;
        const bool works =
            OpenPort(&port, text) == 0 && port->Open(port) == 0 && WriteByte(port) == 0 && ClosePort(port) == 0;
        failures += works ? 0 : 1;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(0, failures);
}

TEST_F(Threads, TransferMeetsTheClosingOfItsPort) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(0, ScannerGunPortOpen(&handle_, round % 2 == 0 ? "NET,10.0.0.5" : "BUF"));
    VexoPort* const port = handle_.port;
    ASSERT_EQ(0, port->Open(port));
    Writer writer(port);
    EXPECT_EQ(0, DiskPortOpen(&handle_, "USB"));
    const int32_t result = writer.Result();
    EXPECT_TRUE(IsOpenOrClosed(result)) << result;
    EXPECT_EQ(-6, WriteByte(port));
  }
}

// Who uses a printer handle finds it closed or open, with the old port or the new one.
TEST_F(Threads, PrinterFunctionsMeetTheReopeningOfTheirHandle) {
  ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  std::atomic<bool> done{false};
  std::atomic<int> strange{0};
  std::thread user([&] {
    while (!done) {
      uint32_t width = 0;
      const int32_t result = GetPrintWidth(&handle_, &width);
      strange += IsOpenOrClosed(result) || result == -332 ? 0 : 1;
    }
  });
  for (int round = 0; round < 1000; ++round) {
    EXPECT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  }
  done = true;
  user.join();
  EXPECT_EQ(0, strange);
}

TEST_F(Threads, AbortEndsTheTransfersOfAnotherThreadForGood) {
  ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "COM1,9600"));
  VexoPort* const port = handle_.port;
  Writer writer(port);
  EXPECT_EQ(0, port->Abort(port));
  EXPECT_EQ(0, writer.Result());

  uint32_t written = 99;
  EXPECT_EQ(0, WriteByte(port, &written));
  EXPECT_EQ(0U, written);
}

}  // namespace
}  // namespace vexo
