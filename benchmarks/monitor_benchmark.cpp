// Cost and latency of job monitors, measured with the program's own port objects to exclude drivers.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "measure.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kPollingMs = 100;
constexpr int kEvents = 100;
constexpr int kMonitors = 64;
constexpr int kObservedMs = 5000;
constexpr int kDestroyed = 20;
constexpr int kCompared = 50;  // Number of monitors, and of sleeping threads.
constexpr int kComparedMs = 3000;
constexpr std::string_view kFrame("\x1b\x1c& V1 report\x00\x01\x05\x00?0042", 22);

// A printer that accepts all commands and reports a job on request.
class Printer : public VexoPort {
 public:
  Printer() : VexoPort() {
    magic = VEXO_PORT_MAGIC;
    VexoPort::Write = [](VexoPort*, const uint8_t*, uint32_t, uint32_t, uint32_t*) { return int32_t{VEXO_OK}; };
    VexoPort::ReadAvailable = [](VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t, uint32_t* read) {
      *read = 0;
      if (static_cast<Printer*>(port)->has_report_.exchange(false)) {
        std::copy(kFrame.begin(), kFrame.end(), buffer + from);
        *read = static_cast<uint32_t>(kFrame.size());
      }
      return int32_t{VEXO_OK};
    };
  }

  void ReportJob() { has_report_ = true; }

 private:
  std::atomic<bool> has_report_{false};
};

class MonitoredPrinter {
 public:
  explicit MonitoredPrinter(int polling_ms = kPollingMs, bool opens = true) {
    Require(monitor_ != nullptr && RegisterPrinter(monitor_, &handle_) == VEXO_OK &&
                SetPollingTime(monitor_, polling_ms) == VEXO_OK &&
                (!opens || OpenReprintMonitorWork(monitor_) == VEXO_OK),
            "starting a monitor");
  }
  MonitoredPrinter(const MonitoredPrinter&) = delete;
  MonitoredPrinter& operator=(const MonitoredPrinter&) = delete;
  ~MonitoredPrinter() { Destroy(); }

  void Destroy() {
    if (monitor_ != nullptr) {
      DestroyReprintMonitorObj(std::exchange(monitor_, nullptr));
    }
  }

  void Add(MonitorCallback callback) {
    int64_t id = 0;
    Require(AddReprintMonitorFun(monitor_, callback, &id) == VEXO_OK, "adding a callback");
  }

  void ReportJob() { printer_.ReportJob(); }

 private:
  Printer printer_;
  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, &printer_, 1};
  CVEXOPrinterReadHelper* monitor_ = GetReprintMonitorObj();
};

std::mutex g_mutex;
std::condition_variable g_called;
Clock::time_point g_called_at;
int g_calls = 0;

void RecordTime(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {
  const Clock::time_point now = Clock::now();
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_called_at = now;
  ++g_calls;
  g_called.notify_one();
}

Clock::time_point AwaitCall(int number) {
  std::unique_lock<std::mutex> lock(g_mutex);
  Require(g_called.wait_for(lock, std::chrono::seconds(30), [=] { return g_calls >= number; }), "waiting for an event");
  return g_called_at;
}

// Measures the time from the arrival of a report to the callback. Reports are spread evenly over the reader's pause,
// which begins after the previous callback.
void MeasureLatency() {
  MonitoredPrinter printer;
  printer.Add(RecordTime);
  printer.ReportJob();
  Clock::time_point pause_began = AwaitCall(1);
  std::vector<double> latencies;
  for (int event = 0; event < kEvents; ++event) {
    std::this_thread::sleep_until(pause_began + std::chrono::microseconds(kPollingMs * (1000 * event + 500) / kEvents));
    const Clock::time_point readable = Clock::now();
    printer.ReportJob();
    pause_began = AwaitCall(event + 2);
    latencies.push_back(Milliseconds(pause_began - readable).count());
  }
  Report("event to callback, median ms", Median(latencies), "<=", kPollingMs / 2 + 1);
  Report("event to callback, worst ms", *std::max_element(latencies.begin(), latencies.end()), "<=", kPollingMs + 5);
}

double ProcessorMilliseconds() {
  FILETIME ignored = {};
  FILETIME kernel = {};
  FILETIME user = {};
  GetProcessTimes(GetCurrentProcess(), &ignored, &ignored, &kernel, &user);
  const auto ticks = [](FILETIME time) {
    return static_cast<double>((static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
  };
  return (ticks(kernel) + ticks(user)) / 10'000;
}

// CPU time of this process as a share of one core.
double ProcessorShare(int observed_ms) {
  const double before = ProcessorMilliseconds();
  const double seconds = Seconds([=] { std::this_thread::sleep_for(std::chrono::milliseconds(observed_ms)); });
  return (ProcessorMilliseconds() - before) / (seconds * 1000);
}

std::vector<std::unique_ptr<MonitoredPrinter>> MakeMonitors(int count, int polling_ms, bool open) {
  std::vector<std::unique_ptr<MonitoredPrinter>> printers(static_cast<size_t>(count));
  for (auto& printer : printers) {
    printer = std::make_unique<MonitoredPrinter>(polling_ms, open);
  }
  return printers;
}

void MeasureIdleCost() {
  const auto printers = MakeMonitors(kMonitors, kPollingMs, true);
  Report("64 monitors polling, % of one core", ProcessorShare(kObservedMs) * 100, "<=", 3);
}

// The share for threads that only sleep repeatedly.
double ShareOfSleepers(int count, int sleep_ms) {
  std::atomic<bool> done{false};
  std::vector<std::thread> sleepers;
  for (int i = 0; i < count; ++i) {
    sleepers.emplace_back([&] {
      while (!done) {
        Sleep(static_cast<DWORD>(sleep_ms));
      }
    });
  }
  const double share = ProcessorShare(kComparedMs);
  done = true;
  for (std::thread& sleeper : sleepers) {
    sleeper.join();
  }
  return share;
}

// An idle reader thread should cost little more than its sleep, however short.
void MeasureShortPauses() {
  for (const int polling_ms : {1, 5, 20, 50, 100}) {
    const double asleep = ShareOfSleepers(kCompared, polling_ms);
    const auto share = [=](bool open) {
      const auto printers = MakeMonitors(kCompared, polling_ms, open);
      return ProcessorShare(kComparedMs);
    };
    const std::string pause = "monitor at " + std::to_string(polling_ms) + " ms ";
    Report((pause + "closed, against Sleep").c_str(), share(false) / asleep, "<=", 1.5);
    Report((pause + "open, against Sleep").c_str(), share(true) / asleep, "<=", 3);
  }
}

void MeasureDestroying() {
  double worst = 0;
  for (int round = 0; round < kDestroyed; ++round) {
    MonitoredPrinter printer;
    std::this_thread::sleep_for(std::chrono::milliseconds(kPollingMs * round / kDestroyed));
    worst = std::max(worst, Seconds([&] { printer.Destroy(); }));
  }
  Report("destroying a monitor, worst ms", worst * 1000, "<=", kPollingMs + 100);
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  vexo::benchmark::MeasureLatency();
  vexo::benchmark::MeasureIdleCost();
  vexo::benchmark::MeasureShortPauses();
  vexo::benchmark::MeasureDestroying();
  return 0;
}
