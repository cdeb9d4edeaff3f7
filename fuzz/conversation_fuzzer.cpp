// Conversations of a host that calls the exports in any order with a printer that answers anything. The input
// determines each step. Everything runs on one thread with the virtual clock; the monitors' reader threads are stopped,
// and polling is a step of its own.
//
// No call may crash, hang or leak, and every call must return a result code or throw a documented exception.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "monitor/printer_read_helper.h"
#include "port/port_lock.h"
#include "require.h"
#include "support/model_port.h"
#include "support/scripted_drivers.h"
#include "support/virtual_clock.h"
#include "vexo/extend.h"

namespace {

constexpr size_t kHandles = 3;
constexpr size_t kMonitors = 2;
constexpr int kMostCallbackSteps = 3;
constexpr size_t kMostTransfers = 5000;  // Limits downloads that wait for an answer the printer never sends.

// The unread part of the input.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool empty() const { return size_ == 0; }
  uint8_t Byte() {
    if (size_ == 0) {
      return 0;
    }
    --size_;
    return *data_++;
  }
  std::string Text(size_t longest) {
    const size_t length = std::min<size_t>({Byte() % (longest + 1), size_, longest});
    std::string text(reinterpret_cast<const char*>(data_), length);
    data_ += length;
    size_ -= length;
    return text;
  }

 private:
  const uint8_t* data_;
  size_t size_;
};

// Whether the segments add up to the file: the download of other images does not end before setCancel.
bool EndsByItself(const std::string& image) {
  constexpr size_t kHeader = 76;
  const size_t body = image.size() > 4 ? static_cast<uint8_t>(image[4]) : 0;
  return image.size() < kHeader || (kHeader + body <= image.size() && image.size() < kHeader + body + kHeader);
}

// A host controlled by the input, and its printers.
class Host {
 public:
  explicit Host(Input* input) : input_(input) {
    vexo::test::SetClock(0);
    vexo::test::DriverScript script;
    script.on_open = [this] { return Chance(6) ? VEXO_ERROR_IO_OPEN_FAILED : VEXO_OK; };
    script.on_write = [this](const uint8_t* bytes, uint32_t length) { return Write(bytes, length); };
    script.on_read = [this](uint8_t* buffer, uint32_t room) { return Read(buffer, room); };
    vexo::test::SetDriverScript(script);
    for (VexoPrinterHandle& handle : handles_) {
      handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
    }
    current = this;
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  ~Host() {
    for (CVEXOPrinterReadHelper*& monitor : monitors_) {
      Destroy(&monitor);
    }
    for (VexoPrinterHandle& handle : handles_) {
      handle.magic = VEXO_PRINTER_MAGIC;
      DiskPortOpen(&handle, "");
    }
    current = nullptr;
    vexo::test::SetDriverScript({});
  }

  void Run() {
    while (!input_->empty()) {
      Step();
    }
  }

  static Host* current;

 private:
  bool Chance(unsigned of) { return input_->Byte() % of == of - 1; }
  VexoPrinterHandle& Handle() { return handles_[input_->Byte() % kHandles]; }
  CVEXOPrinterReadHelper*& Monitor() { return monitors_[input_->Byte() % kMonitors]; }

  void Step();
  void StepOfPorts();
  void StepOfMonitors();
  void StepOfJobs();
  void Download();

  // Hosts may copy a handle. Both then refer to one port, and either may close it.
  static void Copy(const VexoPrinterHandle& from, VexoPrinterHandle* to) {
    if (&from != to) {
      to->magic = VEXO_PRINTER_MAGIC;
      DiskPortOpen(to, "");
      *to = from;
    }
  }

  // The other monitor's reader runs meanwhile, too, but receives nothing.
  void Destroy(CVEXOPrinterReadHelper** monitor) {
    if (*monitor != nullptr && deliveries_ == 0) {
      quiet_ = true;
      held_.reset();
      Require(DestroyReprintMonitorObj(*monitor) == VEXO_OK);
      *monitor = nullptr;
      held_ = std::make_unique<vexo::test::HeldSleepers>();
      AwaitReaders();
      quiet_ = false;
    }
  }

  void AwaitReaders() const {
    const auto readers =
        std::count_if(monitors_.begin(), monitors_.end(), [](auto* monitor) { return monitor != nullptr; });
    Require(held_->Await(static_cast<size_t>(readers)));
  }

  // The printer accepts all data. Its answer comes from the input or from the printer model.
  int32_t Write(const uint8_t* bytes, uint32_t length) {
    if (quiet_) {
      return VEXO_OK;
    }
    if (++transfers_ > kMostTransfers) {
      setCancel();
      return VEXO_ERROR_IO_WRITE;
    }
    printer_.Write(&printer_, bytes, 0, length, &number_);
    if (Chance(12)) {
      return Chance(2) ? VEXO_ERROR_IO_WRITE_TIMEOUT : 10054;
    }
    return VEXO_OK;
  }

  uint32_t Read(uint8_t* buffer, uint32_t room) {
    if (quiet_) {
      return 0;
    }
    if (++transfers_ > kMostTransfers) {
      setCancel();
    }
    switch (input_->Byte() % 8) {
      case 0:
        return 0;
      case 1: {
        const std::string noise = input_->Text(64);
        std::copy_n(noise.begin(), std::min<size_t>(noise.size(), room), buffer);
        return static_cast<uint32_t>(std::min<size_t>(noise.size(), room));
      }
      case 2: {
        printer_.Read(&printer_, buffer, 0, room, &number_);
        return number_ + input_->Byte();  // Counts more than was read, as USB ports do with longer packets.
      }
      default:
        printer_.Read(&printer_, buffer, 0, std::min<uint32_t>(room, 1U + input_->Byte() % 255), &number_);
        return number_;
    }
  }

  template <int kIndex>
  static void OnEvent(int32_t /*event*/, int32_t /*task*/, uint32_t /*value*/) {
    current->Event();
  }

  // A callback, which may call exports or throw.
  void Event() {
    if (quiet_) {
      return;
    }
    ++deliveries_;
    for (int step = 0; step < kMostCallbackSteps && !input_->empty() && deliveries_ < 20; ++step) {
      StepOfJobs();
    }
    --deliveries_;
    if (Chance(5)) {
      throw std::runtime_error("error in a callback");
    }
  }

  Input* const input_;
  std::unique_ptr<vexo::test::HeldSleepers> held_ = std::make_unique<vexo::test::HeldSleepers>();
  vexo::test::ModelPort printer_;
  std::array<VexoPrinterHandle, kHandles> handles_;
  std::array<CVEXOPrinterReadHelper*, kMonitors> monitors_ = {};
  std::atomic<bool> quiet_{false};
  std::vector<int64_t> callbacks_;
  int deliveries_ = 0;
  size_t transfers_ = 0;
  uint32_t number_ = 0;
};

Host* Host::current = nullptr;

void Host::StepOfPorts() {
  static constexpr const char* kDescriptors[] = {"NET,10.0.0.5", "COM1,9600", "USB",    "LPT1",
                                                 "BUF",          "",          "FILE,x", "NET,10.0.0.5,,x"};
  VexoPrinterHandle& handle = Handle();
  switch (input_->Byte() % 8) {
    case 0:
      ScannerGunPortOpen(&handle, kDescriptors[input_->Byte() % 8]);
      break;
    case 1:
      DiskPortOpen(&handle, kDescriptors[input_->Byte() % 8]);
      break;
    case 2:
      if (handle.port != nullptr) {
        handle.portOpen = handle.port->Open(handle.port) == VEXO_OK ? 1 : 0;
      }
      break;
    case 3:
      if (handle.port != nullptr) {
        handle.port->Close(handle.port);
      }
      break;
    case 4:
      Copy(handle, &Handle());
      break;
    case 5:
      if (handle.port != nullptr && Chance(3)) {
        handle.port->Abort(handle.port);
      }
      break;
    case 6:
      handle.portOpen = input_->Byte() % 2;
      break;
    default:
      handle.magic = Chance(4) ? 559 : VEXO_PRINTER_MAGIC;
      break;
  }
}

void Host::StepOfMonitors() {
  CVEXOPrinterReadHelper*& monitor = Monitor();
  switch (input_->Byte() % 4) {
    case 0:
      if (monitor == nullptr) {
        monitor = GetReprintMonitorObj();
        Require(monitor != nullptr);
        AwaitReaders();
      }
      break;
    case 1:
      Destroy(&monitor);
      break;
    case 2:
      RegisterPrinter(monitor, &Handle());
      break;
    default:
      SelectSDKRepintType(monitor, input_->Byte() % 3);
      SetReadTimeOut(monitor, input_->Byte());
      break;
  }
}

void Host::StepOfJobs() {
  static constexpr MonitorCallback kCallbacks[] = {OnEvent<0>, OnEvent<1>};
  CVEXOPrinterReadHelper* const monitor = Monitor();
  char word[4] = {};
  uint16_t status = 0;
  int64_t id = 0;
  switch (input_->Byte() % 16) {
    case 0:
      OpenReprintMonitorWork(monitor);
      break;
    case 1:
      CloseReprintMonitorWork(monitor);
      break;
    case 2:
      QueryReprintMonitorWork(monitor, word, input_->Byte() % 5);
      break;
    case 3:
      GetStatusReport(monitor, &status, &number_);
      break;
    case 4:
      SetPrintTaskId(monitor, input_->Byte());
      break;
    case 5:
      SetClearPrintTask(monitor);
      break;
    case 6:
      GetDeviceStatus(monitor, &number_);
      break;
    case 7:
      SetPaperFeed(monitor);
      break;
    case 8:
      ResetPrinterInteriorId(monitor, input_->Byte() % 3);
      break;
    case 9:
      if (AddReprintMonitorFun(monitor, kCallbacks[input_->Byte() % 2], &id) == VEXO_OK) {
        callbacks_.push_back(id);
      }
      break;
    case 10:
      RemoveReprintMonitorFun(monitor, callbacks_.empty() ? 1 : callbacks_[input_->Byte() % callbacks_.size()]);
      break;
    case 11:
      GetPrintWidth(&Handle(), &number_);
      break;
    case 12:
      SetPrintWidth(&Handle(), input_->Byte());
      break;
    default:
      if (monitor != nullptr) {
        monitor->Poll(input_->Byte());
      }
      break;
  }
}

void Host::Download() {
  static const std::string kFile =
      (std::filesystem::temp_directory_path() / "conversation_fuzzer_").string() + std::to_string(getpid());
  static constexpr DownloadProgressCallback kProgress = [](int32_t percentage) {
    Require(percentage >= 0 && percentage <= 100);
  };
  std::string content = input_->Text(200);
  if (content.size() >= 8) {
    content[5] = content[6] = content[7] = '\0';  // The body length in a firmware image.
  }
  std::FILE* const file = std::fopen(kFile.c_str(), "wb");
  Require(file != nullptr && std::fwrite(content.data(), 1, content.size(), file) == content.size());
  Require(std::fclose(file) == 0);
  VexoPrinterHandle& handle = Handle();
  const char* const descriptor = Chance(2) ? "NET,10.0.0.5" : Chance(2) ? "USB" : nullptr;
  switch (input_->Byte() % 4) {
    case 0:
      downloadFile(&handle, kFile.c_str(), nullptr, kProgress);
      break;
    case 1:
      DownloadFontFile(&handle, input_->Byte(), kFile.c_str(), nullptr, nullptr);
      break;
    case 2:
      downloadYModem(&handle, kFile.c_str(), descriptor, kProgress);
      break;
    default:
      if (EndsByItself(content)) {
        DownloadFMWImg(&handle, kFile.c_str(), descriptor, kProgress);
      }
      break;
  }
  Require(std::remove(kFile.c_str()) == 0);
}

void Host::Step() {
  switch (input_->Byte() % 8) {
    case 0:
    case 1:
      StepOfPorts();
      break;
    case 2:
      StepOfMonitors();
      break;
    case 3:
      Download();
      break;
    case 4: {
      char text[64];
      GetPrinterTaskOverInfo(&Handle(), input_->Byte() % 100, text, input_->Byte() % sizeof(text), &number_);
      break;
    }
    default:
      StepOfJobs();
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool kQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;  // Hides the downloads' traces.
  Require(kQuiet);
  Input input(data, size);
  {
    Host host(&input);
    host.Run();
  }
  Require(vexo::test::OpenDevices() == 0);
  Require(vexo::test::DriverCount() == 0);
  Require(vexo::PortLockReferenceCount() == 0);
  return 0;
}
