// The job monitor as a host sees it: the DLL, its reader thread, and a network printer that speaks up, goes and comes.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "support/report_frames.h"
#include "support/threads.h"
#include "vexo/extend.h"

namespace vexo::test {
namespace {

const std::string kOn = "\x1b\x1c& V1 setval \"job_monitor\" \"on\"\r\n";
const std::string kTag = "\x1b\x1c& V1 setval \"process_id\" \"0007\"\r\n";

// What the callbacks were told, and on which thread: they carry no context, and run on threads of the DLL.
std::mutex g_mutex;
std::vector<std::string> g_events;
std::thread::id g_thread;

void WriteDown(int32_t event, int32_t task, uint32_t value) {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_events.push_back(std::to_string(event) + " " + std::to_string(task) + " " + std::to_string(value));
  g_thread = std::this_thread::get_id();
}

std::vector<std::string> Events() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_events;
}

// The first `count` events, or those that came.
std::vector<std::string> Await(size_t count) {
  Eventually([=] { return Events().size() >= count; });
  return Events();
}

// A host that is connected to a printer and monitors it.
class MonitoringHost {
 public:
  explicit MonitoringHost(const LoopbackPrinter& printer) {
    EXPECT_EQ(ScannerGunPortOpen(&handle_, printer.descriptor().c_str()), VEXO_OK);
    EXPECT_EQ(handle_.port->SetTimeouts(handle_.port, {100, 0, 20'000, 0, 20'000, 2'000}), VEXO_OK);
    EXPECT_EQ(handle_.port->Open(handle_.port), VEXO_OK);
    EXPECT_EQ(SetPollingTime(monitor_, 20), VEXO_OK);
    EXPECT_EQ(SetReadTimeOut(monitor_, 20'000), VEXO_OK);
    EXPECT_EQ(RegisterPrinter(monitor_, &handle_), VEXO_OK);
    EXPECT_EQ(OpenReprintMonitorWork(monitor_), VEXO_OK);
  }
  MonitoringHost(const MonitoringHost&) = delete;
  MonitoringHost& operator=(const MonitoringHost&) = delete;
  ~MonitoringHost() {
    Destroy();
    ScannerGunPortOpen(&handle_, "");
  }

  void Destroy() {
    if (monitor_ != nullptr) {
      EXPECT_EQ(DestroyReprintMonitorObj(std::exchange(monitor_, nullptr)), VEXO_OK);
    }
  }

  void AddCallback() {
    int64_t id = 0;
    EXPECT_EQ(AddReprintMonitorFun(monitor_, WriteDown, &id), VEXO_OK);
  }

  CVEXOPrinterReadHelper* monitor() { return monitor_; }

 private:
  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  CVEXOPrinterReadHelper* monitor_ = GetReprintMonitorObj();
};

class MonitorExports : public ::testing::Test {
 protected:
  MonitorExports() { g_events.clear(); }

  // The printer's end of a host's connection, monitoring switched on.
  static Connection AcceptMonitoring(LoopbackPrinter* printer) {
    Connection connection = printer->Accept();
    EXPECT_EQ(connection.Receive(kOn.size()), kOn);
    return connection;
  }
};

TEST_F(MonitorExports, EventsReachTheCallbackOnTheReaderThread) {
  LoopbackPrinter printer;
  MonitoringHost host(printer);
  host.AddCallback();
  Connection connection = AcceptMonitoring(&printer);
  ASSERT_EQ(SetPrintTaskId(host.monitor(), 7), VEXO_OK);
  EXPECT_EQ(connection.Receive(kTag.size()), kTag);
  connection.Send("noise" + Started("0007") + Ended("0007", 5).substr(0, 16));
  EXPECT_EQ(Await(1), std::vector<std::string>{"1 7 0"});
  const std::thread::id reader = g_thread;
  connection.Send(Ended("0007", 5).substr(16));
  EXPECT_EQ(Await(2), (std::vector<std::string>{"1 7 0", "2 7 5"}));
  EXPECT_EQ(g_thread, reader);
  EXPECT_NE(reader, std::this_thread::get_id());
}

// A printer that is switched off and on again: the next command finds it, and events come as before.
TEST_F(MonitorExports, PrinterGoesAndComesBack) {
  auto printer = std::make_unique<LoopbackPrinter>();
  const uint16_t port = printer->port();
  MonitoringHost host(*printer);
  host.AddCallback();
  Connection connection = AcceptMonitoring(printer.get());
  connection.Send(Started("0001"));
  EXPECT_EQ(Await(1).size(), 1U);

  printer.reset();
  connection.Reset();
  LoopbackPrinter same_printer(PrinterState::kListening, "127.0.0.1", port);
  std::future<Connection> back = std::async(std::launch::async, [&] {
    Connection found = same_printer.Accept();
    // A connection that the reader thread and the command both made is given up by one of them.
    while (found.Receive(kTag.size()) != kTag) {
      found = same_printer.Accept();
    }
    found.Send(Started("0007"));
    return found;
  });
  EXPECT_EQ(SetPrintTaskId(host.monitor(), 7), VEXO_OK);
  EXPECT_EQ(Await(2), (std::vector<std::string>{"1 1 0", "1 7 0"}));
  back.get();
}

TEST_F(MonitorExports, DestroyEndsTheReaderWhileEventsCome) {
  LoopbackPrinter printer;
  MonitoringHost host(printer);
  host.AddCallback();
  Connection connection = AcceptMonitoring(&printer);
  for (int event = 0; event < 1000; ++event) {
    connection.Send(Started("0001"));
  }
  Await(1);
  host.Destroy();
  const size_t events = Events().size();
  EXPECT_EQ(Events().size(), events) << "a callback after the end";
}

CVEXOPrinterReadHelper* g_monitor = nullptr;

void DestroyMonitor(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {
  try {
    DestroyReprintMonitorObj(g_monitor);
  } catch (const std::system_error& deadlock) {
    const std::lock_guard<std::mutex> guard(g_mutex);
    g_events.emplace_back(deadlock.code().value() == EDEADLK ? deadlock.what() : "?");
    throw;
  }
}

TEST_F(MonitorExports, ReaderThatDestroysItsMonitorIsTold) {
  LoopbackPrinter printer;
  MonitoringHost host(printer);  // Destroyed once more, by this thread, which waits for the reader's end.
  int64_t id = 0;
  g_monitor = host.monitor();
  ASSERT_EQ(AddReprintMonitorFun(host.monitor(), DestroyMonitor, &id), VEXO_OK);
  Connection connection = AcceptMonitoring(&printer);
  connection.Send(Started("0001"));
  const std::vector<std::string> told = Await(1);
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told.front().find("resource deadlock would occur"), 0U) << told.front();
}

}  // namespace
}  // namespace vexo::test
