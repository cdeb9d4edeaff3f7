// End of the job monitor's reader thread in the DLL. The portable tests cover what the thread does.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <system_error>

#include "support/report_frames.h"
#include "support/threads.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

std::atomic<int> g_calls{0};
std::atomic<int> g_refusals{0};
CVEXOPrinterReadHelper* g_monitor = nullptr;

void Count(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) { ++g_calls; }

void DestroyMonitor(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {
  try {
    DestroyReprintMonitorObj(g_monitor);
  } catch (const std::system_error& deadlock) {
    const std::string words = deadlock.what();
    g_refusals += words.rfind("resource deadlock would occur", 0) == 0 ? 1 : 0;
    throw;
  }
}

TEST(MonitorExports, DestroyEndsTheReaderAndIsRefusedOnTheReader) {
  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  ASSERT_EQ(ScannerGunPortOpen(&handle, "BUF"), VEXO_OK);
  ASSERT_EQ(handle.port->Open(handle.port), VEXO_OK);
  handle.portOpen = 1;
  g_monitor = GetReprintMonitorObj();
  int64_t id = 0;
  ASSERT_EQ(AddReprintMonitorFun(g_monitor, Count, &id), VEXO_OK);
  ASSERT_EQ(SetPollingTime(g_monitor, 1), VEXO_OK);
  ASSERT_EQ(RegisterPrinter(g_monitor, &handle), VEXO_OK);
  ASSERT_EQ(OpenReprintMonitorWork(g_monitor), VEXO_OK);
  // Reads do not remove data from a buffer port, so the event is delivered repeatedly.
  const std::string event = Started("0001");
  EXPECT_EQ(handle.port->Write(handle.port, reinterpret_cast<const uint8_t*>(event.data()), 0,
                               static_cast<uint32_t>(event.size()), nullptr),
            VEXO_OK);
  EXPECT_TRUE(Eventually([] { return g_calls >= 10; }));
  ASSERT_EQ(AddReprintMonitorFun(g_monitor, DestroyMonitor, &id), VEXO_OK);
  EXPECT_TRUE(Eventually([] { return g_refusals > 0; }));
  EXPECT_EQ(DestroyReprintMonitorObj(g_monitor), VEXO_OK);
  const int calls = g_calls;
  ScannerGunPortOpen(&handle, "");
  EXPECT_EQ(g_calls, calls) << "called after DestroyReprintMonitorObj";
}

}  // namespace
}  // namespace vexo::test
