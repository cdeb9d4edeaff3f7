// What the C++ headers add to the exports: ownership, listeners, and errors as exceptions or codes.
#include "vexo/printer.hpp"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <list>
#include <stdexcept>

#include "core/driver_test.h"
#include "support/scripted_drivers.h"
#include "support/stream_port.h"
#include "support/threads.h"

namespace vexo {
namespace {

using Calls = std::vector<std::string>;

class PrinterHpp : public test::DriverTest {};

int ThrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::system_error& error) {
    return error.code().value();
  }
  return 0;
}

TEST_F(PrinterHpp, FailuresAreThrownOrStored) {
  std::error_code error;
  const Printer none("FILE,x", &error);
  EXPECT_EQ(VEXO_ERROR_NOT_SUPPORTED_PRINTER, error.value());
  EXPECT_EQ(VEXO_ERROR_NOT_SUPPORTED_PRINTER, ThrownBy([] { const Printer printer("FILE,x"); }));

  Printer printer("NET,192.168.1.100", &error);
  EXPECT_FALSE(error);
  EXPECT_EQ(VEXO_ERROR_IO_NOT_OPEN, ThrownBy([&] { printer.GetPrintWidth(); }));
  test::SetDriverScript({0, VEXO_ERROR_IO_OPEN_FAILED});
  try {
    printer.Open();
    FAIL();
  } catch (const std::system_error& failure) {
    EXPECT_STREQ("cannot open the printer: the printer cannot be connected to (-311)", failure.what());
  }
  test::SetDriverScript({});
  printer.Open(&error);
  EXPECT_FALSE(error);
  EXPECT_EQ(0U, printer.GetPrintWidth(&error));
  EXPECT_EQ(std::error_code(VEXO_ERROR_IO_READ_TIMEOUT, ErrorCategory()), error);

  test::DriverScript gone;
  gone.on_write = [](const uint8_t*, uint32_t) { return 10054; };
  test::SetDriverScript(gone);
  printer.Write("receipt", &error);
  EXPECT_EQ(std::error_code(10054, std::system_category()), error);
}

// A serial port is opened on creation, but must be reopened after a time limit was set.
TEST_F(PrinterHpp, OpenReopensASerialPortOnlyWhenNeeded) {
  for (const bool limited : {false, true}) {
    Printer printer("COM1,9600");
    Printer moved(std::move(printer));
    test::SetDriverScript({});
    if (limited) {
      moved.SetTimeLimit(std::chrono::milliseconds(500));
    }
    moved.Open();
    EXPECT_EQ(limited ? (Calls{"COM Close", "COM Close", "COM Open"}) : Calls{}, test::DriverCalls());
    EXPECT_TRUE(moved.is_open());
  }
}

TEST_F(PrinterHpp, ReadsAndWrites) {
  Printer memory("BUF");
  memory.Open();
  EXPECT_EQ(7U, memory.Write("receipt"));
  EXPECT_EQ("receipt", memory.Read(100));
  EXPECT_EQ("receipt", memory.ReadAvailable(7));
  EXPECT_EQ(VEXO_ERROR_BUFFER_TOO_SMALL, ThrownBy([&] { memory.Read(3); }));
  memory.Close();
  EXPECT_EQ(VEXO_ERROR_IO_NOT_OPEN, ThrownBy([&] { memory.Read(1); }));

  Printer printer("NET,1.2.3.4");
  printer.Open();
  printer.Abort();
  EXPECT_EQ(0U, printer.Write("receipt"));
  EXPECT_EQ(VEXO_ERROR_IO_WRITE_TIMEOUT, ThrownBy([&] { printer.WriteAll("receipt"); }));
}

// Behaves as a USB port of a slow printer: reads count whole packets, and writes are partial.
struct PacketPort : VexoPort {
  PacketPort() : VexoPort() {
    magic = VEXO_PORT_MAGIC;
    VexoPort::Read = [](VexoPort*, uint8_t* buffer, uint32_t, uint32_t length, uint32_t* read) {
      std::fill_n(buffer, length, uint8_t{'x'});
      *read = 64;
      return int32_t{VEXO_OK};
    };
    VexoPort::Write = [](VexoPort* port, const uint8_t*, uint32_t, uint32_t length, uint32_t* written) {
      uint32_t& room = static_cast<PacketPort*>(port)->room_left;
      *written = std::min({room, length, uint32_t{1000}});
      room -= *written;
      return int32_t{*written < length ? VEXO_ERROR_IO_WRITE_TIMEOUT : VEXO_OK};
    };
  }
  uint32_t room_left = 5000;
};

TEST_F(PrinterHpp, WriteAllRepeatsPartialWrites) {
  PacketPort packets;
  Printer printer("BUF");
  printer.Open();
  VexoPort* const own_port = std::exchange(printer.handle()->port, &packets);
  EXPECT_EQ(std::string(10, 'x'), printer.Read(10));
  EXPECT_EQ(4500U, printer.WriteAll(std::string(4500, '-')));
  std::error_code error;
  EXPECT_EQ(500U, printer.WriteAll(std::string(4500, '-'), &error));
  EXPECT_EQ(VEXO_ERROR_IO_WRITE_TIMEOUT, error.value());
  printer.handle()->port = own_port;
}

TEST_F(PrinterHpp, PartsOfAUri) {
  const DeviceUri uri = SplitDeviceUri(Printer("NET,192.168.1.100").uri());
  EXPECT_EQ("NET", uri.type);
  EXPECT_EQ("DEVICE", uri.device);
  EXPECT_EQ("192.168.1.100", uri.Find("ip"));
  EXPECT_EQ("9100", uri.Find("port"));
  EXPECT_EQ("", uri.Find("i"));
  EXPECT_TRUE(SplitDeviceUri("vexo:/").parameters.empty());
}

TEST_F(PrinterHpp, FieldsOfAScan) {
  const NetworkScan scan = [](int64_t, char* buffer, int32_t, const char*) {
    std::strcpy(buffer, "1.2.3.4;ready;;3;4;5;6;7;8;9;255.0.0.0;1.1.1.1;12;13;14;|5.6.7.8;ready;cut|");
    return int32_t{VEXO_OK};
  };
  const std::vector<NetworkPrinter> found = ScanNetwork(scan, std::chrono::seconds(1));
  ASSERT_EQ(2U, found.size());
  EXPECT_EQ(size_t{VEXO_SCAN_FIELD_COUNT}, found[0].fields.size());
  EXPECT_EQ("255.0.0.0 1.1.1.1", found[0].network_mask() + " " + found[0].gateway());
  EXPECT_EQ("NET,5.6.7.8 ready ", found[1].descriptor() + " " + found[1].state() + " " + found[1].gateway());
}

TEST_F(PrinterHpp, ExceptionOfAProgressListenerCancelsTheDownload) {
  const std::string path = ::testing::TempDir() + "printer_hpp_file";
  std::ofstream(path) << "content";
  test::DriverScript ready;
  ready.on_read = [](uint8_t* buffer, uint32_t) {
    return static_cast<uint32_t>(std::string("OK").copy(reinterpret_cast<char*>(buffer), 2));
  };
  test::SetDriverScript(ready);
  Printer printer("NET,1.2.3.4");
  printer.Open();
  int calls = 0;
  EXPECT_THROW(printer.DownloadFile(path,
                                    [&](int32_t) {
                                      ++calls;
                                      throw std::runtime_error("error in a listener");
                                    }),
               std::runtime_error);
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(printer.is_open());
  std::remove(path.c_str());
}

class JobMonitorHpp : public PrinterHpp {
 protected:
  // Replaces the printer's port object by one that sends job reports.
  JobMonitorHpp() {
    printer_.Open();
    own_port_ = std::exchange(printer_.handle()->port, &port_);
  }
  ~JobMonitorHpp() override { printer_.handle()->port = own_port_; }

  std::string reports_;                     // Reports to send next; set while monitoring is off.
  std::atomic<bool> waits_for_job_{false};  // Holds them back until a job of seven bytes is sent.
  test::StreamPort port_{[this](size_t) { return waits_for_job_ ? "" : std::exchange(reports_, ""); },
                         [this](uint32_t length) {
                           waits_for_job_ = waits_for_job_ && length != 7;
                           return int32_t{VEXO_OK};
                         }};
  Printer printer_{"BUF"};
  VexoPort* own_port_;
};

TEST_F(JobMonitorHpp, EventsGoToTheListenerOrWaitToBeTaken) {
  std::atomic<int> heard{0};
  JobMonitor monitor(printer_);
  EXPECT_EQ(VEXO_ERROR_MONITOR_NOT_OPEN, ThrownBy([&] { monitor.SetTask(7); }));
  monitor.SetListener([&](const JobEvent& event) {
    heard += event.task == 7 && event.value == (event.ended ? 0xFFFFFFFE : 0) ? 1 : 100;
    throw std::runtime_error("error in a listener");
  });
  reports_ = test::Started("0007") + test::Ended("0007", 0xFFFFFFFE);
  monitor.Start();
  monitor.SetTask(7);
  ASSERT_TRUE(test::Eventually([&] { return heard >= 2; }));
  EXPECT_EQ(2, heard);
  EXPECT_FALSE(monitor.NextEvent());

  monitor.Stop();
  monitor.SetListener(nullptr);
  reports_ = test::Ended("0008", 5);
  monitor.Start();
  std::optional<JobEvent> event;
  ASSERT_TRUE(test::Eventually([&] { return event || (event = monitor.NextEvent()); }));
  EXPECT_EQ(8, event->task);
  EXPECT_EQ(5U, event->value);
}

TEST_F(JobMonitorHpp, PrintWaitsForTheEndOfItsTask) {
  JobMonitor monitor(printer_);
  std::error_code error;
  monitor.Print("receipt", 7, std::chrono::milliseconds(1), &error);
  EXPECT_EQ(VEXO_ERROR_MONITOR_NOT_OPEN, error.value());

  std::atomic<int> heard{0};
  monitor.SetListener([&](const JobEvent&) { ++heard; });
  monitor.SetPollingTime(std::chrono::milliseconds(1));
  reports_ = test::Ended("0006", 6) + test::Started("0007") + test::Ended("0007", 77) + test::Ended("0007", 78);
  waits_for_job_ = true;
  monitor.Start();
  monitor.Print("another job", 7, std::chrono::milliseconds(1), &error);
  EXPECT_EQ(VEXO_ERROR_MONITOR_NO_ANSWER, error.value());
  EXPECT_EQ(77U, monitor.Print("receipt", 7, std::chrono::minutes(1)));
  EXPECT_TRUE(test::Eventually([&] { return heard == 4; }));
}

TEST_F(JobMonitorHpp, ListenersArePooled) {
  for (int round = 0; round < 2; ++round) {
    std::list<JobMonitor> monitors;
    for (int i = 0; i < 64; ++i) {
      monitors.emplace_back(printer_).SetListener([](const JobEvent&) {});
    }
    EXPECT_EQ(VEXO_ERROR_OUT_OF_MEMORY,
              ThrownBy([&] { monitors.emplace_back(printer_).SetListener([](const JobEvent&) {}); }));
  }
}

}  // namespace
}  // namespace vexo
