// soak FOLDER QUIET BUSY LOADING FAULTY SCAN_ADDRESS: uses the library from several threads, with printers that
// scripts/soak.sh has started, until it reads "end". QUIET to FAULTY are port descriptors: a printer that no other host
// changes, one that several hosts print on, one for downloads, and one that misbehaves. The last two store downloads in
// FOLDER/loading and FOLDER/faulty. SCAN_ADDRESS is a printer that answers scans. A USB printer has the serial number
// SOAK.
//
// At any other input line, the program pauses the work and prints its resource usage. At the end it prints the results.
// All this goes to the standard error output, since the library writes its download trace to the standard output.
#include <windows.h>

// After windows.h.
#include <psapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <mutex>
#include <random>
#include <shared_mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "simulators/device_broadcast.h"
#include "soak/cargo.h"
#include "soak/results.h"
#include "support/threads.h"
#include "vexo/printer.hpp"
#include "windows/process_resources.h"

namespace vexo::test {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPause(5);
constexpr milliseconds kPatience(60'000);       // Time limit for working printers.
constexpr milliseconds kAnswerPatience(5'000);  // For an answer, which job events may replace.
constexpr milliseconds kImpatience(100);        // For the printer that misbehaves.
constexpr uint32_t kFirstWidth = 576;
constexpr int32_t kFirstForeignTask = 5000;  // First task number of other processes.

// Results allowed for each operation on the printer that misbehaves. Positive codes are Winsock errors.
const Codes kNone = {};
const Codes kOpen = {VEXO_ERROR_IO_OPEN_FAILED};
const Codes kSend = {
    VEXO_ERROR_IO_NOT_OPEN, VEXO_ERROR_IO_OPEN_FAILED, VEXO_ERROR_IO_WRITE_TIMEOUT, 10053, 10054, 10060};

Codes operator+(Codes codes, const Codes& more) {
  codes.insert(more.begin(), more.end());
  return codes;
}

const Codes kGetWidth = kSend + Codes{VEXO_ERROR_IO_READ_TIMEOUT};
const Codes kSetWidth = kSend + Codes{VEXO_ERROR_IO_READ};
const Codes kNoAnswer = {VEXO_ERROR_MONITOR_NO_ANSWER};
const Codes kAsk = kSend + kNoAnswer;
const Codes kDownload = kSend + Codes{VEXO_ERROR_DOWNLOAD_MODE, VEXO_ERROR_DOWNLOAD_BAD_ANSWER};
const Codes kYModem = kDownload + Codes{VEXO_ERROR_DOWNLOAD_NO_ANSWER, VEXO_ERROR_IO_WRITE};
const Codes kCancelled = {VEXO_ERROR_DOWNLOAD_CANCELLED, VEXO_ERROR_DOWNLOAD_BAD_ANSWER};

Results g_results;
std::atomic<bool> g_ending{false};
std::shared_mutex g_pause;  // Held shared during work; exclusively to pause it.

// Runs the work in rounds until the end.
void Repeat(const std::function<void(uint32_t round)>& work) {
  for (uint32_t round = 0; !g_ending; ++round) {
    {
      const std::shared_lock<std::shared_mutex> guard(g_pause);
      work(round);
    }
    std::this_thread::sleep_for(kPause);
  }
}

// Calls do_it(&error) and counts the result. @return whether it succeeded.
template <typename Operation>
bool Do(const std::string& name, const Codes& documented, Operation do_it) {
  std::error_code error;
  do_it(&error);
  return g_results.Count(name, error.value(), documented);
}

bool Open(const std::string& name, Printer* printer, milliseconds limit, const Codes& documented) {
  printer->SetTimeLimit(limit);
  return Do(name + ": open", documented, [&](auto error) { printer->Open(error); });
}

// Sets print widths and checks that they are read back.
void ChangeWidth(const std::string& name, const std::string& descriptor, milliseconds limit, bool may_fail,
                 uint32_t round) {
  Printer printer(descriptor);
  bool ok = Open(name, &printer, limit, may_fail ? kOpen : kNone);
  for (uint32_t i = 0; ok && i < 5; ++i) {
    const uint32_t width = (round * 5 + i) % 65536;
    uint32_t answer = 0;
    ok = Do(name + ": set width", may_fail ? kSetWidth : kNone,
            [&](auto error) { printer.SetPrintWidth(width, error); }) &&
         Do(name + ": get width", may_fail ? kGetWidth : kNone,
            [&](auto error) { answer = printer.GetPrintWidth(error); });
    // A printer that misbehaves may still send reports to its last host's queries, which are read as answers.
    g_results.Require(!ok || may_fail || answer == width,
                      name + ": width " + std::to_string(answer) + " instead of " + std::to_string(width));
  }
}

// Counts job events of this process and of others, and checks that each end follows its start.
class JobCount {
 public:
  void Add(const JobEvent& event) {
    const std::lock_guard<std::mutex> guard(mutex_);
    ++(event.ended ? ended_ : started_)[event.task >= kFirstForeignTask ? 1 : 0];
    g_results.Require(event.ended ? event.task == running_ : running_ == 0, "busy: job events in the wrong order");
    running_ = event.ended ? 0 : event.task;
  }
  bool Matches(uint64_t jobs) {
    const std::lock_guard<std::mutex> guard(mutex_);
    return started_[0] == jobs && ended_[0] == jobs && started_[1] == ended_[1];
  }
  uint64_t foreign() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return ended_[1];
  }

 private:
  std::mutex mutex_;
  std::array<uint64_t, 2> started_ = {};
  std::array<uint64_t, 2> ended_ = {};
  int32_t running_ = 0;
};

std::atomic<uint64_t> g_jobs{0};

// Prints jobs and waits for the start and the end of each, with a listener or by polling.
void PrintJobs(const std::string& descriptor, int32_t first_task, uint32_t round) {
  Printer printer(descriptor);
  if (!Open("busy", &printer, kPatience, kNone)) {
    return;
  }
  JobMonitor monitor(printer);
  SetPollingTime(monitor.get(), 10);
  SetReadTimeOut(monitor.get(), kAnswerPatience.count());
  const int32_t task = first_task + static_cast<int32_t>(round % 1000);
  std::atomic<int> events{0};
  const auto count_event = [&](const JobEvent& event) {
    const int place = event.ended ? 1 : 0;
    g_results.Require(event.task != task || events++ == place, "busy: wrong event of the own job");
  };
  const bool listens = round % 2 == 0;
  if (listens) {
    monitor.SetListener(count_event);
  }
  if (!Do("busy: start monitoring", kNone, [&](auto error) { monitor.Start(error); })) {
    return;
  }
  Do("busy: set task", kNone, [&](auto error) { monitor.SetTask(task, error); });
  if (Do("busy: print", kNone, [&](auto error) { printer.Write("Total 9.99\n", error); })) {
    ++g_jobs;
  }
  // There is no answer if job events arrive during all attempts.
  bool on = false;
  const bool answered =
      Do("busy: ask whether monitoring is on", kNoAnswer, [&](auto error) { on = monitor.IsOn(error); });
  g_results.Require(on || !answered, "busy: monitoring is off");
  uint32_t status = 0;
  const bool has_status = Do("busy: get status", kNoAnswer, [&](auto error) { status = monitor.GetStatus(error); });
  g_results.Require(status == 5 || !has_status, "busy: wrong status");
  const bool complete = Eventually([&] {
    for (auto event = listens ? std::nullopt : monitor.NextEvent(); event; event = monitor.NextEvent()) {
      count_event(*event);
    }
    std::this_thread::sleep_for(kPause);
    return events >= 2;
  });
  g_results.Require(complete, "busy: events of a job are lost");
  Do("busy: stop monitoring", kNone, [&](auto error) { monitor.Stop(error); });
}

// Calls all monitor functions with the printer that misbehaves.
void TryMonitor(const std::string& descriptor, uint32_t round) {
  Printer printer(descriptor);
  if (!Open("faulty", &printer, kImpatience, kOpen)) {
    return;
  }
  JobMonitor monitor(printer, round % 3 == 0 ? JobMonitor::Family::kGs : JobMonitor::Family::kV1);
  SetPollingTime(monitor.get(), 10);
  SetReadTimeOut(monitor.get(), kImpatience.count());
  monitor.SetListener([](const JobEvent&) {});
  const bool on = Do("faulty: start monitoring", kSend, [&](auto error) { monitor.Start(error); });
  const Codes off = on ? kNone : Codes{VEXO_ERROR_MONITOR_NOT_OPEN};
  Do("faulty: set task", kSend + off, [&](auto error) { monitor.SetTask(7, error); });
  std::error_code unimportant;
  printer.Write("Total 9.99\n", &unimportant);
  Do("faulty: ask whether monitoring is on", kAsk, [&](auto error) { monitor.IsOn(error); });
  Do("faulty: get status", kAsk, [&](auto error) { monitor.GetStatus(error); });
  Do("faulty: clear tasks", kAsk + off, [&](auto error) { monitor.ClearTasks(error); });
  Do("faulty: feed paper", kSend, [&](auto error) { monitor.FeedPaper(error); });
  Do("faulty: stop monitoring", kSend, [&](auto error) { monitor.Stop(error); });
}

// Waits for a printer that restarts.
void AwaitOpen(Printer* printer) {
  std::error_code error;
  do {
    printer->Open(&error);
  } while (error && !g_ending);
}

// A loader keeps waiting after an interrupted download. Restarts the printer.
void LeaveLoader(const std::string& descriptor) {
  Printer printer(descriptor);
  AwaitOpen(&printer);
  std::error_code unimportant;
  printer.Write("\x1b\x1c& V1 do \"reset_printer\"\r\n", &unimportant);
}

// Downloads a different image in each round, with each kind of download in turn, and checks what the printer stored.
// The printer that misbehaves gets no firmware: with a silent printer, that download takes most of an hour.
void Download(const std::string& name, const std::string& descriptor, const std::filesystem::path& folder,
              bool may_fail, uint32_t round) {
  const std::string cargo = (folder / "cargo").string();
  WriteFile(cargo, MakeImage(round));
  Printer printer(descriptor);
  printer.SetTimeLimit(may_fail ? kImpatience : kPatience);
  if (!may_fail) {
    AwaitOpen(&printer);
  } else if (!Do(name + ": open", kOpen, [&](auto error) { printer.Open(error); })) {
    return;
  }
  const int kinds = may_fail ? 3 : 4;
  const bool firmware = round % kinds == 3;
  const bool cancels =
      round % 7 == 6 && !firmware;  // After a cancelled firmware download, the loader stores incomplete images.
  const auto progress = [cancels](int32_t percentage) {
    if (cancels && percentage > 0) {
      setCancel();
    }
  };
  const Codes cancelled = cancels ? kCancelled : kNone;
  const Codes documented = may_fail ? kDownload + cancelled : cancelled;
  bool ok = false;
  switch (round % kinds) {
    case 0:
      ok = Do(name + ": download file", documented, [&](auto e) { printer.DownloadFile(cargo, progress, e); });
      break;
    case 1:
      ok = Do(name + ": download font", documented, [&](auto e) { printer.DownloadFont(cargo, 500, progress, e); });
      break;
    case 2:
      ok = Do(name + ": download YModem", may_fail ? kYModem + cancelled : cancelled,
              [&](auto e) { printer.DownloadYModem(cargo, descriptor.c_str(), progress, e); });
      break;
    default:  // A result of 0 does not mean that the printer accepted the image.
      ok = Do(name + ": download firmware", documented,
              [&](auto e) { printer.DownloadFirmware(cargo, descriptor, progress, e); });
      break;
  }
  std::vector<uint32_t> stored = TakeStoredImages(folder);
  if (ok && !may_fail) {
    Eventually([&] {
      std::this_thread::sleep_for(kPause);
      const std::vector<uint32_t> more = TakeStoredImages(folder);
      stored.insert(stored.end(), more.begin(), more.end());
      return !stored.empty();
    });
    g_results.Require(stored == std::vector<uint32_t>{round}, name + ": a download is not stored exactly once");
  } else if (!may_fail) {
    LeaveLoader(descriptor);
  }
  for (const uint32_t number : stored) {
    g_results.Require(number <= round, name + ": a stored download differs");
  }
}

void Scan(const std::string& address) {
  for (const NetworkScan scan : {ScanPos, ScanLabel}) {
    std::vector<NetworkPrinter> found;
    Do("network: scan", kNone, [&](auto error) { found = ScanNetwork(scan, milliseconds(1000), address, error); });
    g_results.Require(found.size() == 1 && found.front().fields.front() == address, "network: wrong printers");
  }
}

// Simulates the system's message to this process only.
void BroadcastArrival() {
  std::vector<HWND> windows;
  Eventually([&] { return !(windows = simulators::MonitorWindows()).empty(); });
  for (const HWND window : windows) {
    simulators::Broadcast(window, DBT_DEVICEARRIVAL,
                          R"(\\?\USB#VID_1A2B&PID_0001#SOAK#{28d78fad-5a12-11d1-ae5b-0000f803a8c2})");
  }
}

void UseUsb() {
  std::vector<UsbPrinter> printers;
  Do("USB: list", kNone, [&](auto error) { printers = ListUsbPrinters(error); });
  g_results.Require(printers.size() == 1 && printers.front().serial == "SOAK", "USB: wrong list");
  Printer printer("USB,SOAK");
  if (Open("USB", &printer, kPatience, kNone)) {
    uint32_t width = 0;
    Do("USB: get width", kNone, [&](auto error) { width = printer.GetPrintWidth(error); });
    g_results.Require(width == kFirstWidth, "USB: wrong width");
  }
  std::atomic<int> arrivals{0};
  Do("USB: watch", kNone, [&](auto error) {
    const UsbWatch watch([&](const std::string& device, bool removed) { arrivals += device == "SOAK" && !removed; },
                         error);
    BroadcastArrival();
  });
  g_results.Require(arrivals == 1, "USB: an arrival is lost");
}

// Creates and opens ports of all kinds, most of which do not exist.
void OpenPorts() {
  constexpr struct {
    const char* descriptor;
    int32_t made, opened;
  } kPorts[] = {
      {"BUF", VEXO_OK, VEXO_OK},
      {"NET,not an address", VEXO_OK, VEXO_ERROR_IO_OPEN_FAILED},
      {"LPT77", VEXO_OK, ERROR_FILE_NOT_FOUND},
      {"COM77,9600,n,8,1,n", ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
      {"USB,NOBODY", VEXO_ERROR_USB_NOT_FOUND, VEXO_ERROR_USB_NOT_FOUND},
      {"FILE,receipt", VEXO_ERROR_NOT_SUPPORTED_PRINTER, VEXO_ERROR_IO_NOT_OPEN},
      {"NET", VEXO_ERROR_IO_SETTING, VEXO_ERROR_IO_NOT_OPEN},
  };
  for (const auto& row : kPorts) {
    VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
    const int32_t made = ScannerGunPortOpen(&handle, row.descriptor);
    int32_t opened = VEXO_ERROR_IO_NOT_OPEN;
    if (handle.port != nullptr) {
      handle.port->SetTimeouts(handle.port, {100, 0, 100, 0, 100, 100});
      opened = handle.port->Open(handle.port);
    }
    DiskPortOpen(&handle, "");
    g_results.Count("port " + std::string(row.descriptor) + ": make", made, {row.made});
    g_results.Count("port " + std::string(row.descriptor) + ": open", opened, {row.opened});
  }
}

// Resource usage of the process, and the increase that is tolerated.
struct ResourceUsage {
  std::array<size_t, 4> counts;

  static ResourceUsage Now() {
    PROCESS_MEMORY_COUNTERS memory = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    return {{CountHandles(), CountThreads(), CountHeapBytes(), memory.PagefileUsage}};
  }

  void Print(const std::string& name) const {
    std::cerr << "held " << name << ": " << counts[0] << " handles, " << counts[1] << " threads, " << counts[2]
              << " bytes on heaps, " << counts[3] << " bytes in all" << std::endl;
  }

  bool Exceeds(const ResourceUsage& earlier) const {
    constexpr std::array<size_t, 4> kTolerance = {8, 4, 64 << 10, 4 << 20};
    for (size_t i = 0; i < kTolerance.size(); ++i) {
      if (counts[i] > earlier.counts[i] + kTolerance[i]) {
        return true;
      }
    }
    return false;
  }
};

void Run(const std::filesystem::path& folder, const std::string& quiet, const std::string& busy,
         const std::string& loading, const std::string& faulty, const std::string& scan_address) {
  JobCount jobs;
  Printer watched(busy);
  watched.SetTimeLimit(kPatience);
  watched.Open();
  JobMonitor monitor(watched);
  monitor.SetListener([&](const JobEvent& event) { jobs.Add(event); });
  monitor.Start();

  const std::function<void(uint32_t)> works[] = {
      [&](uint32_t round) { ChangeWidth("quiet", quiet, kPatience, /*may_fail=*/false, round); },
      [&](uint32_t round) { PrintJobs(busy, 1001, round); },
      [&](uint32_t round) { PrintJobs(busy, 2001, round); },
      [&](uint32_t round) { ChangeWidth("faulty", faulty, kImpatience, /*may_fail=*/true, round); },
      [&](uint32_t round) { TryMonitor(faulty, round); },
      [&](uint32_t round) {  // One download at a time per process.
        Download("loading", loading, folder / "loading", /*may_fail=*/false, round);
        Download("faulty", faulty, folder / "faulty", /*may_fail=*/true, round);
      },
      [&](uint32_t) { Scan(scan_address); },
      [&](uint32_t) { UseUsb(); },
      [&](uint32_t) { OpenPorts(); },
  };
  std::vector<std::thread> threads;
  for (const auto& work : works) {
    threads.emplace_back(Repeat, work);
  }
  std::cerr << "at work" << std::endl;
  std::vector<ResourceUsage> samples;
  for (std::string name; std::getline(std::cin, name) && name != "end";) {
    const std::unique_lock<std::shared_mutex> guard(g_pause);
    samples.push_back(ResourceUsage::Now());
    samples.back().Print(name);
  }
  g_ending = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  g_results.Require(!samples.empty() && !samples.back().Exceeds(samples.front()), "resource usage has grown");
  g_results.Require(Eventually([&] { return jobs.Matches(g_jobs); }), "busy: events are lost or duplicated");
  std::cerr << "jobs of other processes: " << jobs.foreign() << '\n';
}

}  // namespace
}  // namespace vexo::test

int main(int argc, char** argv) {
  if (argc != 7) {
    std::cerr << "usage: soak FOLDER QUIET BUSY LOADING FAULTY SCAN_ADDRESS\n";
    return 2;
  }
  vexo::test::Run(argv[1], argv[2], argv[3], argv[4], argv[5], argv[6]);
  vexo::test::g_results.Print(&std::cerr);
  return vexo::test::g_results.HasFaults() ? 1 : 0;
}
