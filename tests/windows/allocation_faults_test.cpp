// Calls every export with each of its first allocations failing, alone and together with all later ones. The portable
// tests cover the library's own allocations; here those of the compiler's libraries fail, too.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "support/model_port.h"
#include "support/report_frames.h"
#include "vexo/extend.h"
#include "windows/faulty_library.h"

namespace vexo::test {
namespace {

constexpr uint32_t kAllocations = 12;
constexpr size_t kFirmwareHeaderSize = 76;
constexpr size_t kFirmwareBodySize = 74;
constexpr int32_t kBadAlloc = 1'000'001;  // Stands for std::bad_alloc thrown by the call.
constexpr int32_t kOtherThrown = 1'000'002;

// Everything that an export may need, created without faults.
struct Host {
  FaultyLibrary library;
  ModelPort port;
  VexoPrinterHandle printer = {VEXO_PRINTER_MAGIC, nullptr, &port, 1};
  VexoPrinterHandle fresh = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  CVEXOPrinterReadHelper* monitor = nullptr;
  uint32_t number = 0;
  int64_t id = 0;
  char text[2048] = {};
  std::string file;
  std::string descriptor;
};

#define CALL(function, ...) host.library.Find<decltype(::function)>(#function)(__VA_ARGS__)

void MakeMonitor(Host& host) {
  host.monitor = CALL(GetReprintMonitorObj);
  ASSERT_EQ(CALL(SetReadTimeOut, host.monitor, 40), VEXO_OK);
  ASSERT_EQ(CALL(SetPollingTime, host.monitor, 5), VEXO_OK);
  ASSERT_EQ(CALL(RegisterPrinter, host.monitor, &host.printer), VEXO_OK);
}

void OpenWork(Host& host) {
  MakeMonitor(host);
  ASSERT_EQ(CALL(OpenReprintMonitorWork, host.monitor), VEXO_OK);
}

void MakeTcpPort(Host& host) { ASSERT_EQ(CALL(ScannerGunPortOpen, &host.fresh, host.descriptor.c_str()), VEXO_OK); }

void OpenTcpPort(Host& host) {
  MakeTcpPort(host);
  ASSERT_EQ(host.fresh.port->Open(host.fresh.port), VEXO_OK);
}

void EnterLoader(Host& host) {
  static constexpr uint8_t kLoader[] = {0x1D, 0x75, 0x55, 0xAA};
  host.port.Write(&host.port, kLoader, 0, sizeof(kLoader), &host.number);
}

void Nothing(Host& /*host*/) {}
void IgnoreEvent(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {}
void IgnoreDevice(void* /*context*/, const char* /*device*/, int32_t /*event*/) {}

using Codes = std::vector<int32_t>;

struct Scenario {
  const char* name;
  void (*prepare)(Host&);
  int32_t (*call)(Host&);
  Codes documented;  // Failures allowed when memory runs out.
};

const Codes kPortCodes = {-2, -9, ERROR_NOT_ENOUGH_MEMORY, -372, -309};
const Codes kMonitorCodes = {-9, -7003, -322, -309};
const Codes kDownloadCodes = {-9, -6006, -6008, -6009, -321, -1};

const Scenario kScenarios[] = {
    {"GetExtendVersion", Nothing, [](Host& host) { return CALL(GetExtendVersion, host.text, 8); }, {}},
    {"GetLastErrorCode", Nothing, [](Host& host) { return CALL(GetLastErrorCode); }, {}},
    {"DiskPortOpenUsb", Nothing, [](Host& host) { return CALL(DiskPortOpen, &host.fresh, "USB"); }, kPortCodes},
    {"ScannerPortOpenUsb", Nothing, [](Host& host) { return CALL(ScannerPortOpen, &host.fresh, "USB"); }, kPortCodes},
    {"ScannerGunPortOpenUsb", Nothing, [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "USB"); },
     kPortCodes},
    {"ScannerGunPortOpenTcp", Nothing,
     [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "NET,127.0.0.1"); }, kPortCodes},
    {"ScannerGunPortOpenSerial",
     Nothing,
     [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "COM99,9600"); },
     {-2, ERROR_NOT_ENOUGH_MEMORY, ERROR_FILE_NOT_FOUND}},
    {"ScannerGunPortOpenBluetooth", Nothing,
     [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "BT,001122334455"); }, kPortCodes},
    {"ScannerGunPortOpenMemory", Nothing, [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "BUF"); },
     kPortCodes},
    {"ReplacePort", MakeTcpPort, [](Host& host) { return CALL(ScannerGunPortOpen, &host.fresh, "LPT1"); }, kPortCodes},
    {"ClosePort",
     MakeTcpPort,
     [](Host& host) { return CALL(DiskPortOpen, &host.fresh, "") + 301; },
     {ERROR_NOT_ENOUGH_MEMORY + 301}},
    {"PortOpen", MakeTcpPort, [](Host& host) { return host.fresh.port->Open(host.fresh.port); }, {}},
    {"PortWrite",
     OpenTcpPort,
     [](Host& host) {
       return host.fresh.port->Write(host.fresh.port, reinterpret_cast<const uint8_t*>("x"), 0, 1, &host.number);
     },
     {}},
    {"SetPrintWidth", Nothing, [](Host& host) { return CALL(SetPrintWidth, &host.printer, 640); }, {kBadAlloc}},
    {"GetPrintWidth",
     Nothing,
     [](Host& host) { return CALL(GetPrintWidth, &host.printer, &host.number); },
     {kBadAlloc}},
    {"GetReprintMonitorObj",
     Nothing,
     [](Host& host) {
       host.monitor = CALL(GetReprintMonitorObj);
       return host.monitor != nullptr ? VEXO_OK : CALL(GetLastErrorCode);
     },
     {-7020}},
    {"DestroyReprintMonitorObj",
     OpenWork,
     [](Host& host) { return CALL(DestroyReprintMonitorObj, std::exchange(host.monitor, nullptr)); },
     {}},
    {"RegisterPrinter",
     [](Host& host) { host.monitor = CALL(GetReprintMonitorObj); },
     [](Host& host) { return CALL(RegisterPrinter, host.monitor, &host.printer); },
     {}},
    {"SelectSDKRepintType", MakeMonitor, [](Host& host) { return CALL(SelectSDKRepintType, host.monitor, 0); }, {}},
    {"SetDelayTime", MakeMonitor, [](Host& host) { return CALL(SetDelayTime, host.monitor, 1); }, {}},
    {"SetReadTimeOut", MakeMonitor, [](Host& host) { return CALL(SetReadTimeOut, host.monitor, 1); }, {}},
    {"SetPollingTime", MakeMonitor, [](Host& host) { return CALL(SetPollingTime, host.monitor, 1); }, {}},
    {"OpenReprintMonitorWork", MakeMonitor, [](Host& host) { return CALL(OpenReprintMonitorWork, host.monitor); },
     kMonitorCodes},
    {"CloseReprintMonitorWork", OpenWork, [](Host& host) { return CALL(CloseReprintMonitorWork, host.monitor); },
     kMonitorCodes},
    {"QueryReprintMonitorWork", OpenWork,
     [](Host& host) { return CALL(QueryReprintMonitorWork, host.monitor, host.text, 4); }, kMonitorCodes},
    {"GetStatusReport",
     OpenWork,
     [](Host& host) {
       uint16_t status = 0;
       return CALL(GetStatusReport, host.monitor, &status, &host.number);
     },
     {999}},
    {"SetPrintTaskId", OpenWork, [](Host& host) { return CALL(SetPrintTaskId, host.monitor, 7); }, kMonitorCodes},
    {"SetClearPrintTask", OpenWork, [](Host& host) { return CALL(SetClearPrintTask, host.monitor); }, kMonitorCodes},
    {"GetDeviceStatus", OpenWork, [](Host& host) { return CALL(GetDeviceStatus, host.monitor, &host.number); },
     kMonitorCodes},
    {"SetPaperFeed", OpenWork, [](Host& host) { return CALL(SetPaperFeed, host.monitor); }, kMonitorCodes},
    {"ResetPrinterInteriorId", OpenWork, [](Host& host) { return CALL(ResetPrinterInteriorId, host.monitor, 1); },
     kMonitorCodes},
    {"GetPrinterTaskOverInfo",
     Nothing,
     [](Host& host) {
       return CALL(GetPrinterTaskOverInfo, &host.printer, 40, host.text, sizeof(host.text), &host.number);
     },
     {-9, -332}},
    {"AddReprintMonitorFun",
     MakeMonitor,
     [](Host& host) { return CALL(AddReprintMonitorFun, host.monitor, IgnoreEvent, &host.id); },
     {-9}},
    {"RemoveReprintMonitorFun",
     MakeMonitor,
     [](Host& host) { return CALL(RemoveReprintMonitorFun, host.monitor, 1); },
     {}},
    {"downloadFile", Nothing,
     [](Host& host) { return CALL(downloadFile, &host.printer, host.file.c_str(), nullptr, nullptr); }, kDownloadCodes},
    {"DownloadFontFile", Nothing,
     [](Host& host) { return CALL(DownloadFontFile, &host.printer, 64, host.file.c_str(), nullptr, nullptr); },
     kDownloadCodes},
    {"downloadYModem", EnterLoader,
     [](Host& host) { return CALL(downloadYModem, &host.printer, host.file.c_str(), nullptr, nullptr); },
     kDownloadCodes},
    {"DownloadFMWImg", Nothing,
     [](Host& host) {
       return CALL(DownloadFMWImg, &host.printer, host.file.c_str(), host.descriptor.c_str(), nullptr);
     },
     kDownloadCodes},
    {"setCancel",
     Nothing,
     [](Host& host) {
       CALL(setCancel);
       return int32_t{VEXO_OK};
     },
     {}},
    {"ScanPos",
     Nothing,
     [](Host& host) { return CALL(ScanPos, 20, host.text, sizeof(host.text) - 1, "127.0.0.1"); },
     {-9, -103}},
    {"ScanLabel",
     Nothing,
     [](Host& host) { return CALL(ScanLabel, 20, host.text, sizeof(host.text) - 1, "127.0.0.1"); },
     {-9, -103}},
    {"ScanSnmp", Nothing, [](Host& host) { return CALL(ScanSnmp) == -4 ? 0 : 1; }, {}},
    {"GetUsbDescList",
     Nothing,
     [](Host& host) { return CALL(GetUsbDescList, host.text, sizeof(host.text)); },
     {-9, -300, ERROR_NOT_ENOUGH_MEMORY}},
    {"StartUSBMonitorThread", Nothing, [](Host& host) { return CALL(StartUSBMonitorThread); }, {-9}},
    {"StopUSBMonitorThread",
     [](Host& host) { ASSERT_EQ(CALL(StartUSBMonitorThread), VEXO_OK); },
     [](Host& host) { return CALL(StopUSBMonitorThread); },
     {}},
    {"AddUSBMonitor",
     Nothing,
     [](Host& host) { return CALL(AddUSBMonitor, IgnoreDevice, nullptr) > 0 ? 0 : VEXO_ERROR_OUT_OF_MEMORY; },
     {-9}},
    {"RemoveUSBMonitor", Nothing, [](Host& host) { return CALL(RemoveUSBMonitor, IgnoreDevice) == 1 ? 0 : 1; }, {}},
};

class AllocationFaults : public ::testing::TestWithParam<Scenario> {
 protected:
  AllocationFaults() : file_("allocation_faults_" + std::to_string(GetCurrentProcessId())) {
    std::string content(kFirmwareHeaderSize + kFirmwareBodySize, 'x');
    content.replace(4, 4, LittleEndian(kFirmwareBodySize, 4));  // As a firmware image, it is one segment.
    std::ofstream(file_, std::ios::binary) << content;
  }
  ~AllocationFaults() override { std::remove(file_.c_str()); }

  // Acts as a printer in update mode for any number of connections.
  void TakeFirmware() {
    for (Connection host = printer_.Accept(); !done_; host = printer_.Accept()) {
      if (host.Receive(kFirmwareHeaderSize).size() == kFirmwareHeaderSize) {
        host.Send(std::string(1, '\0'));
        if (host.Receive(kFirmwareBodySize).size() == kFirmwareBodySize) {
          host.Send(std::string(1, '\0'));
        }
        host.ReceiveRest();
      }
    }
  }

  // Prepares, calls the export with the fault, and releases everything. @return whether an allocation failed.
  bool Call(const AllocationFaultPlan& plan) {
    SCOPED_TRACE(testing::Message() << "allocation " << plan.first << (plan.all_that_follow ? " and on" : ""));
    Host host;
    host.file = file_;
    host.descriptor = printer_.descriptor();
    GetParam().prepare(host);
    host.library.Plan(plan);
    const int32_t result = Result(host);
    const bool struck = host.library.Lift();
    const Codes& documented = GetParam().documented;
    EXPECT_TRUE(result == VEXO_OK || std::find(documented.begin(), documented.end(), result) != documented.end())
        << result;
    if (host.monitor != nullptr) {
      EXPECT_EQ(CALL(DestroyReprintMonitorObj, host.monitor), VEXO_OK);
    }
    EXPECT_EQ(CALL(StopUSBMonitorThread), VEXO_OK);
    for (VexoPrinterHandle* handle : {&host.printer, &host.fresh}) {
      EXPECT_EQ(CALL(DiskPortOpen, handle, ""), VEXO_ERROR_IO_SETTING);
    }
    return struck;
  }

  static int32_t Result(Host& host) {
    try {
      return GetParam().call(host);
    } catch (const std::bad_alloc&) {
      return kBadAlloc;
    } catch (...) {
      return kOtherThrown;
    }
  }

  LoopbackPrinter printer_;
  std::atomic<bool> done_{false};
  const std::string file_;
};

TEST_P(AllocationFaults, ExportReturnsDocumentedCodes) {
  std::thread update_mode([this] { TakeFirmware(); });
  for (const bool all_that_follow : {false, true}) {
    bool struck = true;
    for (uint32_t first = 1; first <= kAllocations && struck; ++first) {
      struck = Call({first, all_that_follow});
    }
  }
  done_ = true;
  printer_.ConnectOnce();
  update_mode.join();
}

INSTANTIATE_TEST_SUITE_P(Each, AllocationFaults, ::testing::ValuesIn(kScenarios),
                         [](const auto& scenario) { return std::string(scenario.param.name); });

}  // namespace
}  // namespace vexo::test
