// Time of downloads beyond the waits that the protocols demand, and their memory. download_benchmark PORT needs a
// virtual printer that restarts without delay.
#include "bare_connection.h"

#include <fcntl.h>
#include <io.h>
#include <psapi.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

#include "measure.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

constexpr size_t kMebibyte = 1024 * 1024;
constexpr size_t kFileSize = kMebibyte;
constexpr size_t kImageSize = 4 * kMebibyte;
constexpr size_t kLargeFileSize = 16 * kMebibyte;
constexpr size_t kHeaderSize = 76;
constexpr size_t kChunkSize = 1024;
constexpr int32_t kPacketSize = 2048;
constexpr int32_t kLargestPacketSize = 65535;
constexpr int kImageRounds = 9;

// More than the virtual printer needs to restart.
constexpr DWORD kRestartMs = 200;

// The protocols' waits, in milliseconds.
constexpr double kPerPackage = 20;
constexpr double kPerBlock = 50;
constexpr double kAroundBlocks = 1000 + 500 + 200 + 200;

constexpr char kEnterUpdateMode[] = "\x1b\x1c& V1 do \"dfu\"\r\n";
constexpr char kReset[] = "\x1b\x1c& V1 do \"reset_printer\"\r\n";

// Discards the standard output, and thus the downloads' traces, while it exists. The output is buffered, as it is for a
// pipe: without a buffer, Wine writes each character with a separate call.
class QuietOutput {
 public:
  QuietOutput() {
    std::fflush(stdout);
    const int nowhere = _open("NUL", _O_WRONLY);
    _dup2(nowhere, 1);
    _close(nowhere);
    std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  }
  QuietOutput(const QuietOutput&) = delete;
  QuietOutput& operator=(const QuietOutput&) = delete;
  ~QuietOutput() {
    std::fflush(stdout);
    _dup2(output_, 1);
    _close(output_);
  }

 private:
  const int output_ = _dup(1);
};

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::vector<uint8_t>& content, size_t times = 1) {
    std::ofstream file(name(), std::ios::binary);
    for (size_t i = 0; i < times; ++i) {
      file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    }
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() { std::remove(name()); }

  static const char* name() {
    static const std::string kName = std::string(std::getenv("TEMP")) + "\\download_benchmark.tmp";
    return kName.c_str();
  }
};

std::vector<uint8_t> Content(size_t size) {
  std::vector<uint8_t> content(size);
  for (size_t i = 0; i < size; ++i) {
    content[i] = static_cast<uint8_t>(i * 7 + i / 251);
  }
  return content;
}

// A firmware image of one segment.
std::vector<uint8_t> Image() {
  std::vector<uint8_t> image = Content(kImageSize);
  const uint32_t body = kImageSize - kHeaderSize;
  for (size_t i = 0; i < 4; ++i) {
    image[4 + i] = static_cast<uint8_t>(body >> (8 * i));
  }
  return image;
}

using Download = std::function<int32_t(VexoPrinterHandle*)>;

// Runs downloads, each on a new connection.
class Printer {
 public:
  explicit Printer(std::string port) : port_(std::move(port)), descriptor_("NET,127.0.0.1," + port_) {}

  const std::string& port() const { return port_; }
  const char* descriptor() const { return descriptor_.c_str(); }  // Also that of its loader.

  // The download's time in milliseconds. Waits until the printer has restarted.
  double Time(const Download& download) const {
    VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
    int32_t opened = VEXO_ERROR_IO;
    for (int attempt = 0; opened != VEXO_OK && attempt < 20; ++attempt) {
      Require(ScannerGunPortOpen(&handle, descriptor()) == VEXO_OK, "making the port");
      opened = handle.port->Open(handle.port);
    }
    Require(opened == VEXO_OK, "connecting");
    const QuietOutput quiet;
    const double seconds = Seconds([&] { Require(download(&handle) == VEXO_OK, "downloading"); });
    ScannerGunPortOpen(&handle, "");
    return seconds * 1000;
  }

 private:
  const std::string port_;
  const std::string descriptor_;
};

PROCESS_MEMORY_COUNTERS Memory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  Require(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) != 0, "asking for the memory");
  return counters;
}

// Must run first: later measurements would raise the peak.
void MeasureMemory(const Printer& printer) {
  {
    const TemporaryFile small({1});  // Excludes one-time allocations.
    printer.Time(
        [](VexoPrinterHandle* handle) { return downloadFile(handle, TemporaryFile::name(), nullptr, nullptr); });
  }
  const TemporaryFile large(Content(kMebibyte), kLargeFileSize / kMebibyte);
  const size_t before = Memory().WorkingSetSize;
  printer.Time([](VexoPrinterHandle* handle) {
    return DownloadFontFile(handle, kLargestPacketSize, TemporaryFile::name(), nullptr, nullptr);
  });
  const double grown = static_cast<double>(Memory().PeakWorkingSetSize) - static_cast<double>(before);
  Report("download: memory beyond the file, MiB", grown / kMebibyte - kLargeFileSize / kMebibyte, "<=", 2);
}

void MeasureOverhead(const char* measure, const Printer& printer, double mandated_ms, const Download& download) {
  const double took = printer.Time(download);
  Report(measure, (took - mandated_ms) / mandated_ms, "<=", 0.02);
}

std::vector<uint8_t> BytesOf(const char* text) { return {text, text + std::char_traits<char>::length(text)}; }

// The time compared starts with the first chunk of the body and ends with the restart command.
std::chrono::steady_clock::time_point g_body_started;

void OnProgress(int32_t /*percentage*/) {
  if (g_body_started == std::chrono::steady_clock::time_point()) {
    g_body_started = std::chrono::steady_clock::now();
  }
}

double SinceBodyStarted() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - std::exchange(g_body_started, {})).count();
}

double TimeLibraryFirmware(const Printer& printer) {
  double seconds = 0;
  printer.Time([&](VexoPrinterHandle* handle) {
    const int32_t result = DownloadFMWImg(handle, TemporaryFile::name(), printer.descriptor(), OnProgress);
    seconds = SinceBodyStarted();
    return result;
  });
  return seconds;
}

// The same with plain calls.
double TimeBareFirmware(const Printer& printer, const std::vector<uint8_t>& image) {
  const BareConnection normal(printer.port());
  Require(normal.Write(BytesOf(kEnterUpdateMode)), "entering the update mode");
  Sleep(kRestartMs);
  const BareConnection loader(printer.port());
  std::vector<uint8_t> answer(1);
  Require(loader.Write({image.begin(), image.begin() + kHeaderSize}) && loader.Read(&answer), "sending the header");
  std::vector<uint8_t> chunk;
  for (size_t at = kHeaderSize; at < image.size(); at += chunk.size()) {
    const size_t end = std::min(image.size(), at + kChunkSize);
    chunk.assign(image.begin() + static_cast<ptrdiff_t>(at), image.begin() + static_cast<ptrdiff_t>(end));
    Require(loader.Write(chunk), "sending the body");
    OnProgress(0);
  }
  Require(loader.Read(&answer) && answer[0] == 0 && loader.Write(BytesOf(kReset)), "ending the update");
  return SinceBodyStarted();
}

void MeasureFirmware(const Printer& printer) {
  const std::vector<uint8_t> image = Image();
  const TemporaryFile file(image);
  std::vector<double> library;
  std::vector<double> bare;
  for (int round = 0; round < kImageRounds; ++round) {
    library.push_back(TimeLibraryFirmware(printer));
    Sleep(kRestartMs);
    bare.push_back(TimeBareFirmware(printer, image));
    Sleep(kRestartMs);
  }
  Report("download: firmware, time to bare sends", Median(library) / Median(bare), "<=", 1.1);
}

void Run(const std::string& port) {
  WSADATA winsock = {};
  WSAStartup(MAKEWORD(2, 2), &winsock);
  const Printer printer(port);
  MeasureMemory(printer);
  MeasureFirmware(printer);
  const TemporaryFile file(Content(kFileSize));
  const double packages = static_cast<double>(kFileSize) / kPacketSize;
  MeasureOverhead("download: file, beyond the waits", printer, packages * kPerPackage, [](VexoPrinterHandle* handle) {
    return downloadFile(handle, TemporaryFile::name(), nullptr, nullptr);
  });
  MeasureOverhead("download: font, beyond the waits", printer, packages * kPerPackage, [](VexoPrinterHandle* handle) {
    return DownloadFontFile(handle, kPacketSize, TemporaryFile::name(), nullptr, nullptr);
  });
  const double blocks = static_cast<double>(kFileSize) / 1024 + 1;
  MeasureOverhead("download: YModem, beyond the waits", printer, blocks * kPerBlock + kAroundBlocks,
                  [&](VexoPrinterHandle* handle) {
                    return downloadYModem(handle, TemporaryFile::name(), printer.descriptor(), nullptr);
                  });
  WSACleanup();
}

}  // namespace
}  // namespace vexo::benchmark

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: download_benchmark PORT\n");
    return 2;
  }
  vexo::benchmark::Run(argv[1]);
  return 0;
}
