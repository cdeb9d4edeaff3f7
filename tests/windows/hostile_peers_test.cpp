// The DLL with printers that flood the host and hosts that call from several threads.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "support/report_frames.h"
#include "support/stream_port.h"
#include "support/threads.h"
#include "vexo/extend.h"
#include "windows/port_calls.h"
#include "windows/process_resources.h"

namespace vexo::test {
namespace {

// A printer that sends a long stream. Each answer is appended to it.
class FloodingPort : public StreamPort {
 public:
  explicit FloodingPort(std::string stream)
      : StreamPort([this](size_t room) { return Take(room); }, [this](uint32_t /*length*/) { return Answer(); }),
        stream_(std::move(stream)) {}

 private:
  std::string Take(size_t room) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const std::string piece = stream_.substr(sent_, room);
    sent_ += piece.size();
    return piece;
  }

  int32_t Answer() {
    const std::lock_guard<std::mutex> guard(mutex_);
    stream_ += ValueReply(3);
    return VEXO_OK;
  }

  std::mutex mutex_;
  std::string stream_;
  size_t sent_ = 0;
};

constexpr uint32_t kEvents = 10'000;
CVEXOPrinterReadHelper* g_monitor = nullptr;
std::atomic<uint32_t> g_events{0};
std::atomic<uint32_t> g_errors{0};

void QueryAtEachEvent(int32_t event, int32_t task, uint32_t value) {
  g_errors += event == 2 && task == 7 && value == g_events + 1 ? 0 : 1;
  ++g_events;
  uint32_t status = 0;
  const int32_t result = GetDeviceStatus(g_monitor, &status);
  g_errors += result == VEXO_OK || result == VEXO_ERROR_MONITOR_NO_ANSWER ? 0 : 1;
}

DWORD WINAPI QueryOnce(void* monitor) {
  uint32_t status = 0;
  return static_cast<DWORD>(GetDeviceStatus(static_cast<CVEXOPrinterReadHelper*>(monitor), &status));
}

// Runs on the reader thread, then on a host thread with a small stack.
TEST(HostilePeers, TenThousandEventsAtOnceReachACallbackThatQueries) {
  // Frames of 32 bytes are never split between two receives. A partial frame would be decoded with missing fields.
  std::string burst;
  for (uint32_t event = 1; event <= kEvents; ++event) {
    burst += Frame(0x101, "?0007" + LittleEndian(event, 4) + "filler");
  }
  for (const bool on_host_thread : {false, true}) {
    SCOPED_TRACE(on_host_thread);
    g_events = g_errors = 0;
    FloodingPort port(burst);
    VexoPrinterHandle handle = OpenHandle(&port);
    g_monitor = GetReprintMonitorObj();
    int64_t id = 0;
    ASSERT_EQ(SetReadTimeOut(g_monitor, 0), VEXO_OK);
    ASSERT_EQ(RegisterPrinter(g_monitor, &handle), VEXO_OK);
    ASSERT_EQ(AddReprintMonitorFun(g_monitor, QueryAtEachEvent, &id), VEXO_OK);
    if (on_host_thread) {
      constexpr SIZE_T kStack = 256 * 1024;
      while (g_events < kEvents) {
        const HANDLE thread =
            CreateThread(nullptr, kStack, QueryOnce, g_monitor, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
        ASSERT_EQ(WaitForSingleObject(thread, 60'000), WAIT_OBJECT_0);
        CloseHandle(thread);
      }
    } else {
      ASSERT_EQ(SetPollingTime(g_monitor, 1), VEXO_OK);
      ASSERT_EQ(OpenReprintMonitorWork(g_monitor), VEXO_OK);
      EXPECT_TRUE(Eventually([] { return g_events >= kEvents; }));
    }
    EXPECT_EQ(DestroyReprintMonitorObj(g_monitor), VEXO_OK);
    EXPECT_EQ(g_events, kEvents);
    EXPECT_EQ(g_errors, 0U);
  }
}

TEST(HostilePeers, UnusedRepliesUseBoundedMemory) {
  constexpr size_t kLimit = 1024 * 512;  // More than the 1024 kept replies need.
  std::atomic<uint32_t> reads{0};
  StreamPort port([&](size_t /*room*/) {
    ++reads;
    std::string replies;
    for (int reply = 0; reply < 50; ++reply) {
      replies += ValueReply(reads);
    }
    return replies;
  });
  VexoPrinterHandle handle = OpenHandle(&port);
  CVEXOPrinterReadHelper* const monitor = GetReprintMonitorObj();
  ASSERT_EQ(RegisterPrinter(monitor, &handle), VEXO_OK);
  ASSERT_EQ(SetPollingTime(monitor, 0), VEXO_OK);
  const size_t before = CountHeapBytes();
  ASSERT_EQ(OpenReprintMonitorWork(monitor), VEXO_OK);
  EXPECT_TRUE(Eventually([&] { return reads > 1000; }));
  EXPECT_LT(CountHeapBytes(), before + kLimit);
  EXPECT_EQ(DestroyReprintMonitorObj(monitor), VEXO_OK);
}

TEST(HostilePeers, SeveralThreadsOpenPortsInOneHandleWithoutLeaks) {
  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  const auto open = [&](const char* text) {
    const int32_t result = ScannerGunPortOpen(&handle, text);
    VexoPort* const port = handle.port;
    if (result == VEXO_OK && port != nullptr) {
      port->CheckOpen(port);
    }
    return result;
  };
  size_t handles = 0;
  for (int pass = 0; pass < 2; ++pass) {
    RunOnThreads(3, [&](int thread) {
      for (int round = 0; round < 300; ++round) {
        EXPECT_EQ(open(thread == 0 ? "NET,127.0.0.1" : thread == 1 ? "BUF" : "LPT1"), VEXO_OK);
      }
    });
    EXPECT_EQ(ScannerGunPortOpen(&handle, ""), VEXO_ERROR_IO_SETTING);
    EXPECT_EQ(handle.port, nullptr);
    if (pass == 0) {
      handles = CountHandles();
    }
  }
  EXPECT_LT(CountHandles(), handles + 100) << "of 900 new ports; locks and threads keep a few handles";
}

// Whenever the port is closed during a Write, no connection is made afterwards.
TEST(HostilePeers, ClosedPortDoesNotReconnect) {
  LoopbackPrinter printer;
  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  for (const int delay_ms : {0, 50, 150, 250}) {
    ASSERT_EQ(ScannerGunPortOpen(&handle, printer.descriptor().c_str()), VEXO_OK);
    VexoPort* const port = handle.port;
    ASSERT_EQ(port->SetTimeouts(port, {10, 0, 2000, 0, 2000, 200}), VEXO_OK);
    ASSERT_EQ(port->Open(port), VEXO_OK);
    printer.Accept().Reset();
    printer.StopListening();
    std::future<Written> write = std::async(std::launch::async, [&] { return Write(port, Pattern(3000)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
    port->Close(port);
    printer.Listen();
    const auto [result, written] = write.get();
    EXPECT_TRUE(result == VEXO_ERROR_IO_NOT_OPEN || result == VEXO_ERROR_IO_OPEN_FAILED) << result;
    EXPECT_EQ(written, 0U);
    EXPECT_FALSE(printer.HasPendingConnection());
  }
  EXPECT_EQ(ScannerGunPortOpen(&handle, ""), VEXO_ERROR_IO_SETTING);
}

}  // namespace
}  // namespace vexo::test
