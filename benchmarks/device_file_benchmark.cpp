// Cost of transfers over USB and serial ports, compared with plain overlapped calls of the same sizes. A pipe replaces
// the USB printer and a terminal the serial line. COM5 and COM6 must be connected, see run_serial_tests.sh.
#include <windows.h>

#include <string>
#include <thread>
#include <utility>

#include "measure.h"
#include "simulators/registered_device.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

constexpr uint32_t kPiece = 4096;
constexpr size_t kAnswerSize = 512;
constexpr char kHostLine[] = "\\\\.\\COM5";
constexpr char kPrinterLine[] = "\\\\.\\COM6";
constexpr VexoPortTimeouts kPatient = {60'000, 0, 60'000, 0, 60'000, 0};

// The host's end, used without the library.
class BareFile {
 public:
  explicit BareFile(const std::string& path)
      : file_(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
                          nullptr)),
        event_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    Require(file_ != INVALID_HANDLE_VALUE, "opening a device");
    COMMTIMEOUTS patient = {60'000, 0, 60'000, 0, 60'000};
    SetCommTimeouts(file_, &patient);  // No effect on a pipe.
  }
  BareFile(const BareFile&) = delete;
  BareFile& operator=(const BareFile&) = delete;
  ~BareFile() {
    CloseHandle(file_);
    CloseHandle(event_);
  }

  void Write(const std::vector<uint8_t>& bytes) {
    for (size_t done = 0; done < bytes.size();) {
      const auto piece = static_cast<DWORD>(std::min<size_t>(kPiece, bytes.size() - done));
      OVERLAPPED overlapped = Start();
      done += Finish(WriteFile(file_, bytes.data() + done, piece, nullptr, &overlapped), &overlapped);
    }
  }

  void Read(std::vector<uint8_t>* bytes) {
    for (size_t done = 0; done < bytes->size();) {
      OVERLAPPED overlapped = Start();
      const auto missing = static_cast<DWORD>(bytes->size() - done);
      done += Finish(ReadFile(file_, bytes->data() + done, missing, nullptr, &overlapped), &overlapped);
    }
  }

 private:
  OVERLAPPED Start() {
    OVERLAPPED overlapped = {};
    ResetEvent(event_);
    overlapped.hEvent = event_;
    return overlapped;
  }
  size_t Finish(BOOL done, OVERLAPPED* overlapped) {
    Require(done != 0 || GetLastError() == ERROR_IO_PENDING, "starting a transfer");
    if (done == 0) {
      WaitForSingleObject(event_, INFINITE);
    }
    DWORD count = 0;
    Require(GetOverlappedResult(file_, overlapped, &count, TRUE) != 0, "a transfer");
    return count;
  }

  const HANDLE file_;
  const HANDLE event_;
};

class LibraryPort {
 public:
  explicit LibraryPort(const std::string& descriptor) {
    ScannerGunPortOpen(&handle_, descriptor.c_str());  // Also opens a serial line, but not a USB printer.
    Require(handle_.port != nullptr, "making a port");
    handle_.port->SetTimeouts(handle_.port, kPatient);
    handle_.port->Close(handle_.port);
    Require(handle_.port->Open(handle_.port) == VEXO_OK, "opening a port");
  }
  LibraryPort(const LibraryPort&) = delete;
  LibraryPort& operator=(const LibraryPort&) = delete;
  ~LibraryPort() { ScannerGunPortOpen(&handle_, ""); }

  void Write(const std::vector<uint8_t>& bytes) {
    uint32_t count = 0;
    Require(handle_.port->Write(handle_.port, bytes.data(), 0, static_cast<uint32_t>(bytes.size()), &count) == VEXO_OK,
            "writing through a port");
  }

  void Read(std::vector<uint8_t>* bytes) {
    uint32_t count = 0;
    Require(handle_.port->Read(handle_.port, bytes->data(), 0, static_cast<uint32_t>(bytes->size()), &count) == VEXO_OK,
            "reading through a port");
  }

 private:
  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
};

// The printer's end: reads jobs and answers each.
void SimulatePrinter(HANDLE device, size_t job_size, int rounds) {
  std::vector<uint8_t> job(job_size);
  for (int round = 0; round < rounds; ++round) {
    DWORD count = 0;
    for (size_t done = 0; done < job.size(); done += count) {
      Require(ReadFile(device, job.data(), static_cast<DWORD>(job.size() - done), &count, nullptr) != 0, "the printer");
    }
    Require(WriteFile(device, job.data(), kAnswerSize, &count, nullptr) != 0, "the printer");
  }
}

template <typename Host>
double TimeJobs(Host* host, size_t job_size, int jobs) {
  const std::vector<uint8_t> job(job_size, 0x55);
  std::vector<uint8_t> answer(kAnswerSize);
  return Seconds([&] {
    for (int i = 0; i < jobs; ++i) {
      host->Write(job);
      host->Read(&answer);
    }
  });
}

void ReportRate(const char* measure, const std::vector<double>& library, const std::vector<double>& bare) {
  Report(measure, Median(bare) / Median(library), ">=", 0.95);
}

// Each side has its own pipe, so that the two can alternate.
void MeasureUsb(const char* measure, size_t job_size, int jobs, int rounds) {
  const simulators::RegisteredDevice printer({"USB\\VID_1A2B&PID_0001\\BENCH", "USB\\VID_1A2B&PID_0001&REV_0100",
                                              "Port_#0001.Hub_#0002", L"USBPRINT\\MODEL\\7&1A2B3C&0&USB001"});
  simulators::DeviceFile library_file(printer.path());
  LibraryPort library("USB");
  const std::string bare_path = "\\\\.\\pipe\\vexo_bare_" + std::to_string(GetCurrentProcessId());
  const HANDLE bare_pipe =
      CreateNamedPipeA(bare_path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, kPiece, kPiece, 0, nullptr);
  BareFile bare(bare_path);
  std::thread library_printer(SimulatePrinter, library_file.pipe(), job_size, jobs * rounds);
  std::thread bare_printer(SimulatePrinter, bare_pipe, job_size, jobs * rounds);
  std::vector<double> library_times;
  std::vector<double> bare_times;
  for (int round = 0; round < rounds; ++round) {
    library_times.push_back(TimeJobs(&library, job_size, jobs));
    bare_times.push_back(TimeJobs(&bare, job_size, jobs));
  }
  library_printer.join();
  bare_printer.join();
  CloseHandle(bare_pipe);
  ReportRate(measure, library_times, bare_times);
}

// Only one program at a time can open a serial line, so each round reopens it.
void MeasureSerial(const char* measure, size_t job_size, int jobs, int rounds) {
  const HANDLE line = CreateFileA(kPrinterLine, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  Require(line != INVALID_HANDLE_VALUE, "opening the printer's end of the line");
  COMMTIMEOUTS patient = {0, 0, 60'000, 0, 60'000};
  SetCommTimeouts(line, &patient);
  std::thread printer(SimulatePrinter, line, job_size, 2 * jobs * rounds);
  std::vector<double> library_times;
  std::vector<double> bare_times;
  for (int round = 0; round < rounds; ++round) {
    {
      LibraryPort library("COM5,115200");
      library_times.push_back(TimeJobs(&library, job_size, jobs));
    }
    BareFile bare(kHostLine);
    bare_times.push_back(TimeJobs(&bare, job_size, jobs));
  }
  printer.join();
  CloseHandle(line);
  ReportRate(measure, library_times, bare_times);
}

void Run() {
  MeasureUsb("pipe: 64 KiB jobs, rate to bare", 64 * 1024, 8, 41);
  MeasureUsb("pipe: 1 KiB jobs, rate to bare", 1024, 100, 41);
  MeasureSerial("serial: 4 KiB jobs, rate to bare", 4096, 20, 21);
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  vexo::benchmark::Run();
  return 0;
}
