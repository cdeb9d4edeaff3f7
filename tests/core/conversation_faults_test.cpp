// Complete conversations with a virtual printer, repeated with a connection fault at every byte and with an allocation
// failure at every allocation. Each call must return a documented code, and nothing may leak.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <new>
#include <optional>

#include "core/core_test.h"
#include "core/whole_printer.h"
#include "discovery/scan_follow_up.h"
#include "monitor/printer_read_helper.h"
#include "support/allocation_faults.h"
#include "support/scripted_drivers.h"
#include "virtual_printer/downloads/download_faults.h"

namespace vexo {
namespace {

using test::WholePrinter;
using test::WireDirection;
using test::WireFault;

constexpr char kDescriptor[] = "NET,192.168.1.100";
constexpr size_t kFileSize = 150;
constexpr size_t kFirmwareHeaderSize = 76;
constexpr int32_t kReset = 10054;
constexpr int32_t kBadAlloc = 1'000'001;  // Stands for std::bad_alloc thrown by the call.

struct Host {
  VexoPrinterHandle printer = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  CVEXOPrinterReadHelper* monitor = nullptr;
  int64_t callback = 0;
  uint32_t number = 0;  // Output of any call.
  std::string file;
};

struct Step {
  const char* name;
  int32_t (*call)(Host&);
  std::vector<int32_t> documented;  // Documented failures; 0 is always allowed.
  bool required = false;            // A failure ends the conversation.
};

int32_t OpenPrinter(Host& host) {
  const int32_t made = ScannerGunPortOpen(&host.printer, kDescriptor);
  if (made != VEXO_OK) {
    return made;
  }
  const int32_t result = host.printer.port->Open(host.printer.port);
  host.printer.portOpen = result == VEXO_OK;
  return result;
}

int32_t MakeMonitor(Host& host) {
  host.monitor = GetReprintMonitorObj();
  return host.monitor == nullptr ? GetLastErrorCode() : RegisterPrinter(host.monitor, &host.printer);
}

int32_t Listen(Host& host) {
  return AddReprintMonitorFun(
      host.monitor, [](int32_t, int32_t, uint32_t) {}, &host.callback);
}

int32_t Query(Host& host) {
  char word[8] = {};
  return QueryReprintMonitorWork(host.monitor, word, sizeof word);
}

int32_t Print(Host& host) {
  static constexpr uint8_t kReceipt[] = "One coffee\n";
  VexoPort* const port = host.printer.port;
  return port == nullptr ? VEXO_ERROR_IO_NOT_OPEN : port->Write(port, kReceipt, 0, sizeof kReceipt - 1, &host.number);
}

// Stands for the reader thread. It polls again after a poll that ran out of memory.
int32_t PollMonitor(Host& host) {
  for (int poll = 0; poll < 10; ++poll) {
    try {
      host.monitor->Poll(100);
    } catch (const std::bad_alloc&) {
    }
    test::AdvanceClock(100);
  }
  return VEXO_OK;
}

// Any task number and event is possible, because the printer's bytes may be altered.
int32_t TakeEvents(Host& host) {
  uint16_t status = 0;
  for (int event = 0; event < 10; ++event) {
    GetStatusReport(host.monitor, &status, &host.number);
  }
  return VEXO_OK;
}

int32_t ListenForTaskOver(Host& host) {
  char text[64];
  return GetPrinterTaskOverInfo(&host.printer, 500, text, sizeof text, &host.number);
}

int32_t AskForDetails(Host& /*host*/) {
  ScanList list;
  list.Add("192.168.1.100\r\nready\r\nTill");
  AskScannedPrinters(&list);
  const std::string text = list.Text();
  return text.rfind("192.168.1.100;ready;Till;", 0) == 0 ? VEXO_OK : VEXO_ERROR_IO;
}

void IgnoreProgress(int32_t /*percentage*/) {}

const Step kOpen = {"open", OpenPrinter, {-311, -2, -9, ENOMEM}, true};
const std::vector<int32_t> kSending = {-309, -322, kReset, -9};
const std::vector<int32_t> kAnswered = {-309, -322, kReset, -9, -7003, -7007, -7101};

std::vector<Step> MonitorConversation(int32_t (*select)(Host&)) {
  return {kOpen,
          {"GetReprintMonitorObj, RegisterPrinter", MakeMonitor, {-7020, -309}, true},
          {"SelectSDKRepintType", select, {}},
          {"SetReadTimeOut", [](Host& host) { return SetReadTimeOut(host.monitor, 100); }, {}},
          {"SetPollingTime", [](Host& host) { return SetPollingTime(host.monitor, 50); }, {}},
          {"SetDelayTime", [](Host& host) { return SetDelayTime(host.monitor, 50); }, {}},
          {"AddReprintMonitorFun", Listen, {-9}},
          {"OpenReprintMonitorWork", [](Host& host) { return OpenReprintMonitorWork(host.monitor); }, kSending},
          {"QueryReprintMonitorWork", Query, kAnswered},
          {"SetPrintTaskId", [](Host& host) { return SetPrintTaskId(host.monitor, 7); }, kAnswered},
          {"print", Print, kSending},
          {"poll for the job", PollMonitor, {}},
          {"RemoveReprintMonitorFun",
           [](Host& host) { return RemoveReprintMonitorFun(host.monitor, host.callback); },
           {-9}},
          {"print once more", Print, kSending},
          {"poll for the other job", PollMonitor, {}},
          {"GetStatusReport", TakeEvents, {}},
          {"GetDeviceStatus", [](Host& host) { return GetDeviceStatus(host.monitor, &host.number); }, kAnswered},
          {"SetPaperFeed", [](Host& host) { return SetPaperFeed(host.monitor); }, kSending},
          {"SetClearPrintTask", [](Host& host) { return SetClearPrintTask(host.monitor); }, kAnswered},
          {"ResetPrinterInteriorId", [](Host& host) { return ResetPrinterInteriorId(host.monitor, 1); }, kAnswered},
          {"CloseReprintMonitorWork", [](Host& host) { return CloseReprintMonitorWork(host.monitor); }, kSending},
          {"GetPrinterTaskOverInfo", ListenForTaskOver, {-309, -332, -9, -2, -1, kReset}}};
}

// Faults that the virtual printer makes on request, and the result of the download.
using RequestedFaults = std::vector<std::pair<const char*, int32_t>>;

struct Conversation {
  const char* name;
  std::vector<Step> steps;
  bool downloads = false;        // The printer must have stored the file.
  bool always_succeeds = false;  // The result is 0 even if the printer did not store the file.
  bool retries_forever = false;  // A write that times out is repeated without limit.
  RequestedFaults requested = {};
};

Conversation Download(const char* name, int32_t (*download)(Host&), const RequestedFaults& requested) {
  return {name,     {kOpen, {name, download, {-309, -322, kReset, -9, -6006, -6008, -6009, -321}}}, true, false, false,
          requested};
}

std::vector<Conversation> Conversations() {
  const RequestedFaults package_faults = {{"refuse@0x3", 0},     {"wrong-echo@0", 0},    {"bad-checksum@0", 0},
                                          {"silence@0", 0},      {"split@0", 0},         {"drop@0", -6009},
                                          {"refuse@0x4", -6009}, {"refuse@mode", -6006}, {"split@mode", -6006}};
  const RequestedFaults ymodem_faults = {{"refuse@mode", -6008},       {"refuse@handshake", -6009},
                                         {"silence@handshake", -6008}, {"nak@header", -6008},
                                         {"split@header", -6008},      {"nak@0", -6009},
                                         {"silence@0", -6009},         {"nak@end", -6009},
                                         {"silence@end", -6008},       {"nak@closing", -6009}};
  std::vector<Conversation> conversations = {
      {"Width",
       {kOpen,
        {"GetPrintWidth",
         [](Host& host) { return GetPrintWidth(&host.printer, &host.number); },
         {-309, -322, -332, kReset, kBadAlloc}},
        {"SetPrintWidth",
         [](Host& host) { return SetPrintWidth(&host.printer, 640); },
         {-309, -322, -331, kReset, kBadAlloc}}}},
      {"Details", {{"follow-up of a scan", AskForDetails, {kBadAlloc}}}, false, false, true},
      {"V1Monitor", MonitorConversation([](Host& host) { return SelectSDKRepintType(host.monitor, 1); })},
      {"GsMonitor", MonitorConversation([](Host& host) { return SelectSDKRepintType(host.monitor, 0); })},
      Download(
          "File", [](Host& host) { return downloadFile(&host.printer, host.file.c_str(), nullptr, IgnoreProgress); },
          package_faults),
      Download(
          "Font",
          [](Host& host) { return DownloadFontFile(&host.printer, 64, host.file.c_str(), nullptr, IgnoreProgress); },
          package_faults),
      Download(
          "YModem",
          [](Host& host) { return downloadYModem(&host.printer, host.file.c_str(), kDescriptor, IgnoreProgress); },
          ymodem_faults),
      Download("Firmware",
               [](Host& host) { return DownloadFMWImg(&host.printer, host.file.c_str(), kDescriptor, IgnoreProgress); },
               {{"refuse@0", 0}, {"silence@0", 0}, {"refuse@1", 0}, {"silence@1", 0}, {"drop@mode", 0}})};
  conversations.back().always_succeeds = true;
  return conversations;
}

std::string NameOf(WireFault fault) {
  static constexpr const char* kNames[] = {"nothing", "drop", "stall", "noise"};
  return kNames[static_cast<size_t>(fault)];
}

// The printer does not confirm the end of a download: the end mark of a font and the restart command.
constexpr size_t kUnconfirmedSize = 4 + sizeof("\x1b\x1c& V1 do \"reset_printer\"\r\n") - 1;

// The allocation that fails.
struct MemoryFault {
  size_t step = SIZE_MAX;
  uint32_t allocation = 0;  // Counted from 1.
};

class ConversationFaults : public ::testing::TestWithParam<Conversation> {
 protected:
  // All downloads use this content. As a firmware image, it is one segment.
  ConversationFaults() : content_(kFileSize), file_(::testing::TempDir() + "conversation_" + std::to_string(getpid())) {
    for (size_t i = 0; i < content_.size(); ++i) {
      content_[i] = static_cast<uint8_t>(i * 7 + 1);
    }
    StoreLittleEndian32(&content_[4], kFileSize - kFirmwareHeaderSize);
    std::ofstream file(file_, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content_.data()), static_cast<std::streamsize>(content_.size()));
    file.close();
    ::testing::internal::CaptureStdout();  // The downloads' traces.
  }
  ~ConversationFaults() override {
    ::testing::internal::GetCapturedStdout();
    static_cast<void>(std::remove(file_.c_str()));
    EXPECT_EQ(std::vector<std::string>(), errors_);
  }

  // Runs the steps until a required one fails. @return whether an allocation failed.
  bool RunConversation(const WholePrinter& printer, const MemoryFault& fault, const std::string& scenario) {
    test::HeldSleepers held;  // Stops the monitor's reader thread.
    Host host;
    host.file = file_;
    bool failed = false;
    const std::vector<Step>& steps = GetParam().steps;
    for (size_t step = 0; step < steps.size() && !failed; ++step) {
      int32_t result = VEXO_OK;
      {
        test::AllocationFault allocation_fault(step == fault.step ? fault.allocation : 0);
        result = Call(steps[step], host);
        failed = allocation_fault.Lift();
      }
      CheckResult(steps[step], result, printer, scenario);
      if (result != VEXO_OK && step < steps.size() - 1 && steps[step].required) {
        break;
      }
    }
    held.Release();
    if (host.monitor != nullptr) {
      DestroyReprintMonitorObj(host.monitor);
    }
    DiskPortOpen(&host.printer, "");
    return failed;
  }

  // The library keeps the records of the latest closed ports. Fills that list, so that each further closed port frees
  // an older one.
  static void FillClosedPortRecords() {
    constexpr int kPorts = 70;
    for (int i = 0; i < kPorts; ++i) {
      VexoPrinterHandle printer = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
      ScannerGunPortOpen(&printer, kDescriptor);
      DiskPortOpen(&printer, "");
    }
    test::SetDriverScript({});
  }

  static int32_t Call(const Step& step, Host& host) {
    try {
      return step.call(host);
    } catch (const std::bad_alloc&) {
      return kBadAlloc;
    }
  }

  void CheckResult(const Step& step, int32_t result, const WholePrinter& printer, const std::string& scenario) {
    const bool documented =
        result == VEXO_OK || std::find(step.documented.begin(), step.documented.end(), result) != step.documented.end();
    const bool false_success = must_store_ && &step == &GetParam().steps.back() && result == VEXO_OK &&
                               (printer.Stored().empty() || printer.Stored().back() != content_);
    if (!documented || false_success) {
      errors_.push_back(scenario + ": " + step.name + " gives " + std::to_string(result) +
                        (false_success ? ", and the printer does not have the file" : ""));
    }
  }

  // The library may keep memory that it allocates once. A second round that keeps memory, too, is a leak.
  template <typename Round>
  void ExpectNoLeak(const std::string& scenario, Round round) {
    int64_t kept = 0;
    for (int rounds = 0; rounds < 2; ++rounds) {
      const int64_t before = test::AllocatedBytes();
      round();
      kept = test::AllocatedBytes() - before;
      if (kept == 0) {
        break;
      }
    }
    if (errors_.empty() && (kept != 0 || test::DriverCount() != expected_drivers_)) {
      errors_.push_back(scenario + ": leaks " + std::to_string(kept) + " bytes and " +
                        std::to_string(test::DriverCount() - expected_drivers_) + " ports");
    }
  }

  bool must_store_ = GetParam().downloads;  // If so, success means that the printer stored the file.
  const int32_t expected_drivers_ = test::DriverCount();
  std::vector<std::string> errors_;
  virtual_printer::Bytes content_;
  const std::string file_;
};

TEST_P(ConversationFaults, ConnectionFaultAtEveryByte) {
  size_t lengths[2] = {};
  {
    const WholePrinter printer;
    RunConversation(printer, {}, "no fault");
    lengths[0] = printer.Passed(WireDirection::kToPrinter);
    lengths[1] = printer.Passed(WireDirection::kToHost);
  }
  FillClosedPortRecords();
  for (const WireDirection direction : {WireDirection::kToPrinter, WireDirection::kToHost}) {
    for (size_t position = 0; position < lengths[static_cast<size_t>(direction)]; ++position) {
      for (const WireFault fault : {WireFault::kDrop, WireFault::kStall, WireFault::kNoise}) {
        const std::string scenario = NameOf(fault) + " at byte " + std::to_string(position) +
                                     (direction == WireDirection::kToHost ? " to the host" : " to the printer");
        const bool to_printer = direction == WireDirection::kToPrinter;
        if (to_printer && fault == WireFault::kStall && GetParam().retries_forever) {
          continue;
        }
        must_store_ = GetParam().downloads && !GetParam().always_succeeds &&
                      !(to_printer && position + kUnconfirmedSize >= lengths[0]);
        ExpectNoLeak(scenario, [&] {
          const WholePrinter printer({fault, direction, position});
          RunConversation(printer, {}, scenario);
        });
      }
    }
  }
}

TEST_P(ConversationFaults, AllocationFailureAtEveryAllocation) {
  {
    const WholePrinter printer;
    RunConversation(printer, {}, "no fault");
  }
  FillClosedPortRecords();
  must_store_ = must_store_ && !GetParam().always_succeeds;
  for (size_t step = 0; step < GetParam().steps.size(); ++step) {
    bool failed = true;
    for (uint32_t allocation = 1; failed; ++allocation) {
      const std::string scenario = "no memory for allocation " + std::to_string(allocation);
      ExpectNoLeak(scenario, [&] {
        const WholePrinter printer;
        failed = RunConversation(printer, {step, allocation}, scenario);
      });
    }
  }
}

TEST_P(ConversationFaults, PrinterFaultsOnRequest) {
  for (const auto& [fault, expected] : GetParam().requested) {
    virtual_printer::PrinterSetup setup;
    setup.downloads.faults = {virtual_printer::ParseDownloadFault(fault).value()};
    const WholePrinter printer({}, setup);
    Host host;
    host.file = file_;
    const int32_t opened = OpenPrinter(host);
    const int32_t result = GetParam().steps.back().call(host);
    const bool stored = printer.Stored() == std::vector<virtual_printer::Bytes>{content_};
    const bool should_store = expected == VEXO_OK && !GetParam().always_succeeds;
    if (opened != VEXO_OK || result != expected || stored != should_store) {
      errors_.push_back(std::string(fault) + " gives " + std::to_string(result) + (stored ? ", stored" : ""));
    }
    DiskPortOpen(&host.printer, "");
  }
}

INSTANTIATE_TEST_SUITE_P(Each, ConversationFaults, ::testing::ValuesIn(Conversations()),
                         [](const auto& conversation) { return std::string(conversation.param.name); });

}  // namespace
}  // namespace vexo
