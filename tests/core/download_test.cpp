// The four downloads to a virtual printer, with the virtual clock. Each test compares a log of the download: trace
// lines, port calls with their lengths, sleeps and percentages, in order.
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <deque>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "core/driver_test.h"
#include "port/handle_port.h"
#include "support/allocation_faults.h"
#include "support/scripted_drivers.h"
#include "virtual_printer/model/printer_model.h"

namespace vexo::test {
namespace {

using Log = std::vector<std::string>;
using Pieces = std::vector<Bytes>;

enum FaultKind {
  kNone,
  kFailingWrite,
  kCancelledAtWrite,
  kCancelledAtProgress,
  kClosedHandle,   // Another thread closes the handle during a write.
  kDamagedHandle,  // The handle loses its magic during a write.
  kRefusedConnects,
  kAnswering,     // Replaces one answer by other pieces.
  kOvercounting,  // A read counts more bytes than it returns, as USB ports do with longer packets.
  kReadingFails,
  kWithoutProgress,
};

struct Fault {
  bool Is(FaultKind other, int at) const { return kind == other && index == at; }

  FaultKind kind = kNone;
  int index = 0;  // Of the write, answer or progress call, from 0; or the number of refused connects.
  Pieces replacement = {};
};

std::function<void(int32_t percentage)> g_on_progress;

Bytes FileContent(size_t size) {
  Bytes content(size);
  for (size_t i = 0; i < size; ++i) {
    content[i] = static_cast<uint8_t>(i % 251 + 1);  // Adjacent blocks differ.
  }
  return content;
}

// A firmware image with segments of these body sizes.
Bytes ImageOf(const std::vector<uint32_t>& bodies) {
  constexpr size_t kHeaderSize = 76;
  Bytes image;
  for (const uint32_t size : bodies) {
    Bytes segment = FileContent(kHeaderSize + size);
    StoreLittleEndian32(segment.data() + 4, size);
    Append(&image, segment);
  }
  return image;
}

// Formats bytes for the log: commands as text, up to 4 bytes in hexadecimal, else the length.
std::string Show(const Bytes& bytes) {
  const std::string text(bytes.begin(), bytes.end());
  if (text.rfind("\x1b\x1c& V1 ", 0) == 0) {
    return text.substr(7, text.size() - 9);
  }
  std::string shown;
  for (const uint8_t byte : bytes) {
    char hex[4];
    (void)std::snprintf(hex, sizeof(hex), " %02X", byte);
    shown += hex;
  }
  return bytes.size() <= 4 ? shown.substr(std::min<size_t>(1, shown.size())) : std::to_string(bytes.size()) + " bytes";
}

struct Download {
  const char* name;
  int32_t (*run)(VexoPrinterHandle* handle, const char* file, DownloadProgressCallback progress);
  Bytes content;
};

const Download kFile = {"file", [](auto* h, auto* f, auto p) { return downloadFile(h, f, nullptr, p); },
                        FileContent(3000)};
const Download kFont = {"font", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 1500, f, "ignored", p); },
                        FileContent(3001)};
const Download kFirmware = {"firmware", [](auto* h, auto* f, auto p) { return DownloadFMWImg(h, f, "NET,dfu", p); },
                            ImageOf({1500, 0})};
const Download kYModem = {"ymodem", [](auto* h, auto* f, auto p) { return downloadYModem(h, f, "NET,loader", p); },
                          FileContent(1500)};

class DownloadTest : public DriverTest {
 protected:
  DownloadTest() {
    const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
    file_ = ::testing::TempDir() + test->name() + '_' + std::to_string(getpid());
  }
  ~DownloadTest() override {
    handle_.magic = VEXO_PRINTER_MAGIC;
    static_cast<void>(std::remove(file_.c_str()));
  }

  void MakeFile(const Bytes& content) const {
    std::ofstream file(file_, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  }

  // Creates the file and downloads it over an open USB port.
  int32_t Run(const Download& download, const Fault& fault = {}) {
    MakeFile(download.content);
    return RunWith(download, file_.c_str(), fault);
  }

  int32_t RunWith(const Download& download, const char* file, const Fault& fault = {}) {
    fault_ = fault;
    handle_.magic = VEXO_PRINTER_MAGIC;
    SetDriverScript({});
    EXPECT_EQ(0, ReconnectHandle(&handle_, "vexo:/dev/bus/USB/DEVICE?sn=A1"));
    model_ = std::make_unique<virtual_printer::PrinterModel>(virtual_printer::PrinterSetup{});
    model_->Connect(connection_ = 1);
    SetClock(0);
    log_.clear();
    written_.clear();
    stored_.clear();
    to_host_.clear();
    answers_ = connects_ = 0;
    sleeps_logged_ = trace_offset_ = 0;
    progress_ = 0;
    DriverScript script;
    script.during = [this](const std::string& call) { Record(call.substr(call.find(' ') + 1)); };
    script.on_open = [this] { return Connect(); };
    script.on_write = [this](const uint8_t* bytes, uint32_t length) { return Receive(Bytes(bytes, bytes + length)); };
    script.on_read = [this](uint8_t* buffer, uint32_t room) { return Send(buffer, room); };
    script.read_failure = fault.kind == kReadingFails ? VEXO_ERROR_IO_READ : VEXO_OK;
    SetDriverScript(script);
    g_on_progress = [this](int32_t percentage) {
      const UncountedAllocations uncounted;
      Record("progress " + std::to_string(percentage));
      if (fault_.Is(kCancelledAtProgress, progress_++)) {
        setCancel();
      }
    };
    ::testing::internal::CaptureStdout();
    constexpr DownloadProgressCallback kProgress = [](int32_t percentage) { g_on_progress(percentage); };
    const int32_t code = download.run(&handle_, file, fault.kind == kWithoutProgress ? nullptr : kProgress);
    Record("");
    ::testing::internal::GetCapturedStdout();
    return code;
  }

  // How the log differs from that of a download without faults: "N: LINES", where N lines are equal before. A final
  // "..." means that the remaining lines are equal again.
  std::string DifferenceFrom(const Log& usual_log) const {
    const auto [usual, mine] = std::mismatch(usual_log.begin(), usual_log.end(), log_.begin(), log_.end());
    auto end = log_.end();
    for (auto last = usual_log.end(); last != usual && end != mine && *(last - 1) == *(end - 1); --last) {
      --end;
    }
    return std::to_string(mine - log_.begin()) + ":" + Collapse(Log(mine, end)) + (end != log_.end() ? " ..." : "");
  }

  // Writes repeated lines once: "3 x (a; b)".
  static std::string Collapse(const Log& lines) {
    constexpr size_t kLongest = 14;
    std::string text;
    for (size_t at = 0; at < lines.size();) {
      size_t length = 1;
      size_t times = 1;
      for (size_t candidate = 1; candidate <= kLongest; ++candidate) {
        size_t repeats = 1;
        while (at + (repeats + 1) * candidate <= lines.size() &&
               std::equal(&lines[at], &lines[at] + candidate, &lines[at] + repeats * candidate)) {
          ++repeats;
        }
        if (repeats > 1 && repeats * candidate > times * length) {
          length = candidate;
          times = repeats;
        }
      }
      std::string group;
      for (size_t i = at; i < at + length; ++i) {
        group += (i > at ? "; " : "") + lines[i];
      }
      text += times > 1 ? ' ' + std::to_string(times) + " x (" + group + ");" : ' ' + group + ';';
      at += times * length;
    }
    return text;
  }

  std::string file_;
  Log log_;
  Pieces written_;
  Pieces stored_;
  int connects_ = 0;
  std::function<void(int write)> on_write_ = {};

 private:
  // Appends the sleeps and trace lines since the last call, then `line`.
  void Record(const std::string& line) {
    const std::vector<uint32_t> sleeps = RecordedSleeps();
    for (; sleeps_logged_ < sleeps.size(); ++sleeps_logged_) {
      log_.push_back("sleep " + std::to_string(sleeps[sleeps_logged_]));
    }
    char traced[512];
    for (ssize_t count = 0;
         (count = pread(STDOUT_FILENO, traced, sizeof(traced), static_cast<off_t>(trace_offset_))) > 0;
         trace_offset_ += static_cast<size_t>(count)) {
      trace_.append(traced, static_cast<size_t>(count));
    }
    for (size_t end = 0; (end = trace_.find('\n')) != std::string::npos; trace_.erase(0, end + 1)) {
      log_.push_back(HideFileName(trace_.substr(0, end)));
    }
    if (!trace_.empty()) {  // Some trace lines have no line end.
      log_.push_back(HideFileName(std::exchange(trace_, {})));
    }
    if (!line.empty()) {
      log_.push_back(line);
    }
  }

  std::string HideFileName(std::string line) const {
    const size_t name = line.find(file_);
    return name != std::string::npos ? line.replace(name, file_.size(), "FILE") : line;
  }

  int32_t Connect() {
    if (++connects_ <= (fault_.kind == kRefusedConnects ? fault_.index : 0)) {
      return VEXO_ERROR_IO_OPEN_FAILED;
    }
    model_->Disconnect(connection_, now_);
    now_ += std::chrono::seconds(10);  // Time for any restart.
    model_->Connect(++connection_);
    return VEXO_OK;
  }

  int32_t Receive(const Bytes& bytes) {
    const int write = static_cast<int>(written_.size());
    written_.push_back(bytes);
    log_.back() = "Write " + Show(bytes);
    if (on_write_) {
      on_write_(write);
    }
    if (fault_.Is(kCancelledAtWrite, write)) {
      setCancel();
    }
    handle_.portOpen = fault_.Is(kClosedHandle, write) ? 0 : handle_.portOpen;
    handle_.magic = fault_.Is(kDamagedHandle, write) ? 1 : handle_.magic;
    if (fault_.Is(kFailingWrite, write)) {
      return VEXO_ERROR_IO_WRITE_TIMEOUT;
    }
    Bytes answer;
    for (const virtual_printer::WireEvent& event : model_->Receive(connection_, bytes.data(), bytes.size(), now_)) {
      if (event.direction == virtual_printer::WireEvent::Direction::kSent) {
        Append(&answer, event.message.bytes);
      }
    }
    const virtual_printer::SideEffects side_effects = model_->TakeSideEffects();
    for (const auto& completed : side_effects.completed) {
      stored_.push_back(completed.download.data);
    }
    if (!answer.empty()) {
      Answer(answer);
    }
    return VEXO_OK;
  }

  void Answer(const Bytes& usual) {
    const Pieces pieces = fault_.Is(kAnswering, answers_++) ? fault_.replacement : Pieces{usual};
    to_host_.insert(to_host_.end(), pieces.begin(), pieces.end());
  }

  // Each read returns at most one piece.
  uint32_t Send(uint8_t* buffer, uint32_t room) {
    if (to_host_.empty()) {
      return 0;
    }
    Bytes& piece = to_host_.front();
    const auto count = static_cast<uint32_t>(std::min<size_t>(room, piece.size()));
    std::copy_n(piece.begin(), count, buffer);
    piece.erase(piece.begin(), piece.begin() + count);
    if (piece.empty()) {
      to_host_.pop_front();
    }
    return count + (fault_.kind == kOvercounting ? 50 : 0);
  }

  std::string trace_;
  Fault fault_;
  std::unique_ptr<virtual_printer::PrinterModel> model_;
  virtual_printer::Time now_;
  int connection_ = 0;
  std::deque<Bytes> to_host_;
  int answers_ = 0;
  int progress_ = 0;
  size_t sleeps_logged_ = 0;
  size_t trace_offset_ = 0;
};

const char* const kFileLog =
    R"(filename =FILE | totalFileSize =3000 | Enter Upgrade mode... | ReadAvailable 512 | Write 12 46 | Read 2
ReadAvailable 512 | Ready to send file... | progress 0 | package 0 | Write 2060 bytes | sleep 20 | Read 12
progress 0 | package 1 | Write 2060 bytes | sleep 20 | Read 12 | progress 50 | progress 100 | restart printer...
Write do "reset_printer" | Close | Completed...
)";

const char* const kFontLog = R"(filename =FILE | totalFileSize =3001 | Enter Upgrade mode... | ReadAvailable 512
Write do "font_download_quick" | Read 2 | ReadAvailable 512 | Ready to send file... | progress 0 | package 0
Write 1512 bytes | sleep 20 | Read 12 | progress 0 | package 1 | Write 1512 bytes | sleep 20 | Read 12
progress 33 | package 2 | Write 1512 bytes | sleep 20 | Read 12 | progress 66 | progress 100
restart printer... | Write 5E 45 4E 44 | Write do "reset_printer" | Successfully restarted the device...
ReadAvailable 512 | Close | Completed...
)";

const char* const kFirmwareLog =
    R"(filename =FILE | totalFileSize =1652 | Enter Upgrade mode... | ReadAvailable 512 | Write do "dfu"
ReadAvailable 512 | Close | Configure vexo:/dev/bus/NET/DEVICE?ip=dfu+port=9100 | Open | Write 76 bytes
sleep 200 | Read 1 | Successfully distributed... | Write 1024 bytes | progress 61 | Write 476 bytes
progress 90 | progress 100 | Read 1 | Successfully distributed... | Close
Configure vexo:/dev/bus/NET/DEVICE?ip=dfu+port=9100 | Open | Write 76 bytes | sleep 200 | Read 1
Successfully distributed... | progress 100 | Read 1 | Successfully distributed...
Download firmware complete... | Write do "reset_printer" | Successfully restarted the device...
ReadAvailable 512
)";

const char* const kYModemLog =
    R"(filename =FILE | totalFileSize =1500 | Enter Upgrade mode... | ReadAvailable 512 | Write 1D 75 55 AA | Close
sleep 1000 | desc = NET,loader | Close | Configure vexo:/dev/bus/NET/DEVICE?ip=loader+port=9100 | Open
ReadAvailable 512 | Shake hands before sending... | Write 31 | sleep 500 | Read 1
Prepare to send packet headers... | Write 133 bytes | Read 2 | Ready to send file... | progress 0 | package 0
Write 1029 bytes | sleep 50 | ReadAvailable 32 | ReadAvailable 32 | progress 0 | package 1 | Write 1029 bytes
sleep 50 | ReadAvailable 32 | ReadAvailable 32 | progress 50 | Sending file completed and Shake hands...
Write 04 | sleep 200 | Read 1 | A Empty packet at the end of sending... | Write 133 bytes | sleep 200 | Read 1
End of Sending flag... | Write 33 | progress 100 | restart printer... | Write do "reset_printer" | Close
Completed...
)";

// Splits the text at bars and line ends.
Log Lines(const std::string& text) {
  Log lines;
  std::istringstream rows(text);
  for (std::string row; std::getline(rows, row);) {
    for (size_t end = 0; end != std::string::npos; row.erase(0, end != std::string::npos ? end + 3 : 0)) {
      end = row.find(" | ");
      lines.push_back(row.substr(0, end));
    }
  }
  return lines;
}

TEST_F(DownloadTest, LogsOfCompleteDownloads) {
  const std::pair<const Download&, const char*> rows[] = {
      {kFile, kFileLog}, {kFont, kFontLog}, {kFirmware, kFirmwareLog}, {kYModem, kYModemLog}};
  for (const auto& [download, log] : rows) {
    SCOPED_TRACE(download.name);
    EXPECT_EQ(0, Run(download));
    EXPECT_EQ(Lines(log), log_);
    EXPECT_EQ(Pieces{download.content}, stored_) << "content stored by the printer";
    const bool stays_open = &download == &kFirmware;
    EXPECT_EQ(stays_open ? 1 : 0, handle_.portOpen);
    EXPECT_EQ(stays_open ? 1 : 0, OpenDevices());
  }
}

// The answer to the first package of a file, with other bytes at its end.
Bytes PackageAnswer(const Bytes& end) {
  Bytes answer = {0xDD, 0xCC, 0xBB, 0xAA, 0, 0, 0, 0, 0, 0, 0x0E, 0x03};
  std::copy(end.begin(), end.end(), answer.end() - static_cast<ptrdiff_t>(end.size()));
  return answer;
}

struct Row {
  Row(const Download& which, Fault what, int32_t result, int open_afterwards, const char* log)
      : download(which), fault(std::move(what)), code(result), open(open_afterwards), replacement(log) {}

  const Download& download;
  Fault fault;
  int32_t code;
  int open;
  const char* replacement;
};

TEST_F(DownloadTest, Faults) {
  const Bytes nak = {0x15};
  const Row rows[] = {
      Row(kFile, {kFailingWrite, 0}, -322, 1, "5: failed: WriteData failed...;"),
      Row(kFile, {kFailingWrite, 1}, 0, 0, "11: failed:WriteData Failed...; Write 2060 bytes; ..."),
      Row(kFile, {kFailingWrite, 3}, 0, 0, "24:"),
      Row(kFile, {kCancelledAtWrite, 0}, -6004, 1, "9: Cancel...;"),
      Row(kFile, {kCancelledAtWrite, 2}, -6009, 1, "17: failed:Slave Response Failed.........;"),
      Row(kFile, {kCancelledAtWrite, 3}, 0, 0, "24:"),
      Row(kFile, {kCancelledAtProgress, 0}, -6004, 1, "9: Cancel...;"),
      Row(kFile, {kCancelledAtProgress, 1}, -6004, 1, "14: Cancel...;"),
      Row(kFile, {kClosedHandle, 0}, -6006, 0, "5: failed:Enter Mode Failed...;"),
      Row(kFile, {kClosedHandle, 1}, -6009, 0,
          "12: 3 x (failed:WriteData Failed...); failed:Slave Response Failed.........;"),
      Row(kFile, {kClosedHandle, 3}, -309, 0, "22: ..."),
      Row(kFile, {kDamagedHandle, 3}, -6, 1, "22: ..."),
      Row(kFile, {kOvercounting}, 0, 0, "24:"),
      Row(kFile, {kReadingFails}, -6006, 1, "6: failed:Enter Mode Failed...;"),
      Row(kFile, {kWithoutProgress}, 0, 0,
          "8: package 0; Write 2060 bytes; sleep 20; Read 12; package 1; Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 0, {}}, -6006, 1, "6: 5 x (sleep 200; Read 2); failed:Enter Mode Failed...;"),
      Row(kFile, {kAnswering, 0, {BytesOf("OX")}}, -6006, 1, "6: failed:Enter Mode Failed...;"),
      Row(kFile, {kAnswering, 0, {BytesOf("XK")}}, -6006, 1, "6: failed:Enter Mode Failed...;"),
      Row(kFile, {kAnswering, 0, {{'O'}, {'K'}}}, -6006, 1, "6: Read 1; failed:Enter Mode Failed...;"),
      Row(kFile, {kAnswering, 0, {BytesOf("OK!")}}, 0, 0, "24:"),
      Row(kFile, {kAnswering, 1, {}}, 0, 0, "13: 30 x (Read 12); Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {{0xDD, 0xCC, 0xBB, 0xAA}, {0, 0, 0, 0, 0, 0, 0x0E, 0x03}}}, 0, 0, "13: Read 8; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({0, 0})}}, 0, 0, "13: Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({1, 0, 0, 0, 0, 0, 0x0F, 0x03})}}, 0, 0,
          "13: Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({1, 0, 0x0E, 0x03})}}, 0, 0,
          "13: Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({0, 1, 0x0E, 0x03})}}, 0, 0,
          "13: Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({0x0F, 0x03})}}, 0, 0,
          "13: failed:Slave Response Failed...; Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({0x0E, 0x04})}}, 0, 0,
          "13: failed:Slave Response Failed...; Write 2060 bytes; sleep 20; Read 12; ..."),
      Row(kFile, {kAnswering, 1, {PackageAnswer({0x00, 0x03})}}, 0, 0,
          "13: failed:Slave Response Failed...; Write 2060 bytes; sleep 20; Read 12; ..."),

      Row(kFont, {kFailingWrite, 0}, -322, 1, "5: failed: WriteData failed...;"),
      Row(kFont, {kFailingWrite, 4}, 0, 0, "32:"),
      Row(kFont, {kFailingWrite, 5}, -322, 1, "28: Reboot device failed...;"),
      Row(kFont, {kClosedHandle, 4}, -309, 0, "27: Reboot device failed...;"),
      Row(kFont, {kClosedHandle, 5}, 0, 0, "29: ..."),
      Row(kFont, {kOvercounting}, 0, 0, "32:"),
      Row(kFont, {kCancelledAtProgress, 3}, 0, 0, "32:"),

      Row(kFirmware, {kFailingWrite, 0}, -322, 1, "5: write command failed...;"),
      Row(kFirmware, {kFailingWrite, 1}, -322, 1, "10: failed: WriteData failed...;"),
      Row(kFirmware, {kFailingWrite, 3}, -322, 1, "16: failed: WriteData failed...;"),
      Row(kFirmware, {kFailingWrite, 5}, -322, 1, "32: Reboot device failed...;"),
      Row(kFirmware, {kCancelledAtWrite, 0}, -6004, 1, "6: Cancel...;"),
      Row(kFirmware, {kCancelledAtWrite, 2}, -6004, 1, "15: Cancel...;"),
      Row(kFirmware, {kCancelledAtWrite, 4}, -6004, 1, "27: Cancel...;"),
      Row(kFirmware, {kCancelledAtWrite, 5}, 0, 1, "34:"),
      Row(kFirmware, {kDamagedHandle, 0}, 0, 1, "5: Openfail;"),
      Row(kFirmware, {kClosedHandle, 2}, -309, 0, "15: failed: WriteData failed...;"),
      Row(kFirmware, {kRefusedConnects, 1}, 0, 0, "9: Openfail;"),
      Row(kFirmware, {kOvercounting}, 0, 1, "12: failed: ReadData failed...;"),
      Row(kFirmware, {kReadingFails}, 0, 1, "12: failed: ReadData failed...;"),
      Row(kFirmware, {kAnswering, 0, {}}, 0, 1, "12: 5 x (sleep 200; Read 1); failed: ReadData failed...;"),
      Row(kFirmware, {kAnswering, 0, {nak}}, 0, 1, "12: failed: ReadData error...;"),
      Row(kFirmware, {kAnswering, 1, {}}, 0, 1,
          "19: 99 x (sleep 200; Read 1; sleep 200; Read 1; sleep 200; Read 1; sleep 200; Read 1; sleep 200; Read 1; "
          "Read "
          "1); "
          "5 x (sleep 200; Read 1); failed: ReadData failed...;"),
      Row(kFirmware, {kAnswering, 1, {nak}}, 0, 1, "19: failed: ReadData error...;"),

      Row(kYModem, {kFailingWrite, 0}, -322, 1, "5: write command failed...;"),
      Row(kYModem, {kFailingWrite, 1}, -321, 1, "14: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 2}, -321, 1, "18: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 4}, -321, 1, "29: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 5}, -321, 1, "35: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 6}, -321, 1, "39: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 7}, -321, 1, "43: failed:WriteData Failed...;"),
      Row(kYModem, {kFailingWrite, 8}, 0, 0, "48:"),
      Row(kYModem, {kCancelledAtWrite, 0}, -6004, 1, "12: Cancel...;"),
      Row(kYModem, {kCancelledAtWrite, 2}, -6004, 1, "21: Cancel...;"),
      Row(kYModem, {kCancelledAtWrite, 3}, -6004, 1, "27: Cancel...;"),
      Row(kYModem, {kCancelledAtWrite, 4}, 0, 0, "48:"),
      Row(kYModem, {kDamagedHandle, 0}, -6, 1,
          "5: sleep 1000; 20 x (sleep 500); 20 x (desc = NET,loader; retry to reconnect...); failed:Enter Mode "
          "Failed...;"),
      Row(kYModem, {kClosedHandle, 7}, 0, 0, "45: ..."),
      Row(kYModem, {kRefusedConnects, 2}, 0, 0,
          "11: 2 x (sleep 500; retry to reconnect...; desc = NET,loader; Close; "
          "Configure vexo:/dev/bus/NET/DEVICE?ip=loader+port=9100; Open); ..."),
      Row(kYModem, {kRefusedConnects, 20}, -6006, 0,
          "11: 19 x (sleep 500; retry to reconnect...; desc = NET,loader; Close; "
          "Configure vexo:/dev/bus/NET/DEVICE?ip=loader+port=9100; Open); sleep 500; retry to reconnect...; "
          "failed:Enter Mode Failed...;"),
      Row(kYModem, {kOvercounting}, 0, 0, "48:"),
      Row(kYModem, {kReadingFails}, -6008, 1, "16: failed:Data Is Missed...;"),
      Row(kYModem, {kAnswering, 0, {}}, -6008, 1, "16: 5 x (sleep 200; Read 1); failed:Data Is Missed...;"),
      Row(kYModem, {kAnswering, 0, {nak}}, -6009, 1, "16: failed:Slave Response Failed...;"),
      Row(kYModem, {kAnswering, 1, {}}, -6008, 1,
          "19: 5 x (sleep 200; Read 2; sleep 200; Read 2; sleep 200; Read 2; sleep 200; Read 2; sleep 200; Read 2; "
          "sleep 1000; Read 2); 5 x (sleep 200; Read 2); sleep 1000; failed:Data Is Missed...;"),
      Row(kYModem, {kAnswering, 1, {{'C', 6}}}, 0, 0, "48:"),
      Row(kYModem, {kAnswering, 1, {{'C', 'C'}}}, -6009, 1, "19: failed:Slave Response Failed...;"),
      Row(kYModem, {kAnswering, 1, {{6}, {'C'}}}, -6008, 1,
          "19: Read 1; 5 x (sleep 1000; Read 2; sleep 200; Read 2; sleep 200; Read 2; sleep 200; Read 2; sleep 200; "
          "Read "
          "2; "
          "sleep 200; Read 2); sleep 1000; failed:Data Is Missed...;"),
      Row(kYModem, {kAnswering, 2, {}}, -6009, 1, "26: 4 x (ReadAvailable 32); failed:Slave Response Failed...;"),
      Row(kYModem, {kAnswering, 2, {nak}}, -6009, 1, "26: failed:Slave Response Failed...;"),
      Row(kYModem, {kAnswering, 2, {{'C'}, {6}}}, 0, 0, "26: ReadAvailable 32; ..."),
      Row(kYModem, {kAnswering, 4, {}}, -6008, 1, "37: 5 x (sleep 200; Read 1); failed:Data Is Missed...;"),
      Row(kYModem, {kAnswering, 4, {nak}}, -6009, 1, "37: failed:Slave Response Failed...;"),
      Row(kYModem, {kAnswering, 5, {nak}}, -6009, 1, "41: failed:Slave Response Failed...;"),
  };
  std::map<const Download*, Log> usual_logs;
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.download.name << ", row " << &row - rows);
    Log& usual = usual_logs[&row.download];
    if (usual.empty()) {
      Run(row.download);
      usual = log_;
    }
    EXPECT_EQ(row.code, Run(row.download, row.fault));
    EXPECT_EQ(row.open, handle_.portOpen);
    EXPECT_EQ(row.replacement, DifferenceFrom(usual));
  }
}

// The last package of a file is padded with zeros. That of a font is padded with the end of the previous package,
// except for one zero byte, and a YModem block with the bytes of the previous block.
TEST_F(DownloadTest, PaddingOfTheLastPackage) {
  const auto tail_of = [](const Bytes& piece, size_t from) {
    return Bytes(piece.begin() + static_cast<ptrdiff_t>(from), piece.end() - 2);
  };
  Run(kFile);
  EXPECT_EQ(Bytes(2048 - 952), tail_of(written_[2], 10 + 952));
  Run(kFont);
  Bytes filler = tail_of(written_[2], 11);
  filler[0] = 0;
  EXPECT_EQ(filler, tail_of(written_[3], 11));
  Run(kYModem);
  EXPECT_EQ(tail_of(written_[3], 3 + 476), tail_of(written_[4], 3 + 476));
}

TEST_F(DownloadTest, NumberOfPackages) {
  const Download rows[] = {
      {"3", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 1, f, nullptr, p); }, FileContent(3)},
      {"1", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 2048, f, nullptr, p); }, FileContent(2048)},
      {"2", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 65535, f, nullptr, p); }, FileContent(65536)},
      {"2", kFile.run, FileContent(2049)},
      {"2", kFile.run, FileContent(4096)},
      // YModem adds a block after an exact multiple, and block numbers wrap.
      {"3", kYModem.run, FileContent(2048)},
      {"1", kYModem.run, FileContent(1023)},
      {"257", kYModem.run, FileContent(256 * 1024)}};
  for (const Download& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(0, Run(row));
    EXPECT_EQ(Pieces{row.content}, stored_);
    EXPECT_EQ(std::stoi(row.name), std::count_if(log_.begin(), log_.end(), [](const std::string& line) {
                return line.rfind("package ", 0) == 0;
              }));
  }
}

// Each download has its own trace text for an empty file.
TEST_F(DownloadTest, BadArgumentsAreRefusedBeforeAnythingIsSent) {
  const std::pair<const Download&, Log> rows[] = {{kFile, {"failed:file is null.file is null."}},
                                                  {kFont, {"failed: The file is empty."}},
                                                  {kFirmware, {"failed:file is null."}},
                                                  {kYModem, {"failed:file is null."}}};
  for (const auto& [download, of_empty_file] : rows) {
    SCOPED_TRACE(download.name);
    MakeFile(download.content);
    ::testing::internal::CaptureStdout();
    VexoPrinterHandle bad = {559, nullptr, nullptr, 1};
    VexoPrinterHandle closed = {VEXO_PRINTER_MAGIC, nullptr, handle_.port, 0};
    EXPECT_EQ(-6, download.run(nullptr, "FILE", nullptr));
    EXPECT_EQ(-6, download.run(&bad, "FILE", nullptr));
    EXPECT_EQ(-309, download.run(&closed, "FILE", nullptr));
    EXPECT_EQ("error handle.error handle.error handle.", ::testing::internal::GetCapturedStdout());
    for (const char* const name : {static_cast<const char*>(nullptr), "missing/file"}) {
      EXPECT_EQ(-1, RunWith(download, name));
      EXPECT_EQ(Log{"error parameters."}, log_);
    }
    EXPECT_EQ(-6007, Run({"", download.run, {}}));
    EXPECT_EQ(2U, log_.size());
    EXPECT_EQ(of_empty_file.front(), log_.back());
    EXPECT_TRUE(written_.empty());
  }
  for (const auto& run : {+[](VexoPrinterHandle*h, const char*f, DownloadProgressCallback p) {
                            return DownloadFontFile(h, 0, f, nullptr, p);
                          },
                          +[](VexoPrinterHandle*h, const char*f, DownloadProgressCallback p) {
                            return DownloadFontFile(h, 65536, f, nullptr, p);
                          }}) {
    EXPECT_EQ(-1, Run({"", run, {1}}));
    EXPECT_EQ(Log{"error parameters."}, log_);
  }
}

TEST_F(DownloadTest, EarlierCancelRequestIsIgnored) {
  setCancel();
  EXPECT_EQ(0, Run(kFile));
}

TEST_F(DownloadTest, ReconnectToTheLoader) {
  Download download = {"", [](auto* h, auto* f, auto p) { return downloadYModem(h, f, "USB", p); }, {1}};
  EXPECT_EQ(0, Run(download));
  EXPECT_EQ("USB Configure vexo:/dev/bus/USB/A1", DriverCalls().at(2)) << "reconnects by serial number";
  download.run = [](auto* h, auto* f, auto p) { return downloadYModem(h, f, nullptr, p); };
  EXPECT_EQ(-6008, Run(download)) << "the printer is not in its loader";
  EXPECT_EQ((Log{"ReadAvailable 512", "Shake hands before sending..."}), Log(log_.begin() + 2, log_.begin() + 4));
  download = {"", [](auto* h, auto* f, auto p) { return DownloadFMWImg(h, f, nullptr, p); }, ImageOf({1})};
  EXPECT_EQ(0, Run(download));
  EXPECT_EQ("Openfail", log_.back());
}

// Surplus bytes are sent as an incomplete header, and nothing after them.
TEST_F(DownloadTest, ImageWithSurplusBytesAtItsEnd) {
  for (const size_t surplus : {1, 75}) {
    Download image = {"", kFirmware.run, ImageOf({10})};
    Append(&image.content, FileContent(surplus));
    EXPECT_EQ(0, Run(image, {kAnswering, 2, {{0}}}));
    Bytes header = FileContent(surplus);
    header.resize(76);
    ASSERT_EQ(5U, written_.size());
    EXPECT_EQ(header, written_[3]);
    EXPECT_EQ(2, connects_);
  }
}

// Compatibility: the download of such an image does not end before it is cancelled.
TEST_F(DownloadTest, ImageWithATooLongSegmentRunsUntilCancelled) {
  for (const uint32_t announced : {11U, 0xFFFFFFFFU}) {
    Download image = {"", kFirmware.run, ImageOf({10})};
    StoreLittleEndian32(image.content.data() + 4, announced);
    std::thread canceller;
    std::atomic<bool> ended{false};
    on_write_ = [&](int write) {
      if (write == 1) {
        struct stat trace = {};
        fstat(STDOUT_FILENO, &trace);
        canceller = std::thread([&ended, enough = trace.st_size + 10'000] {
          struct stat grown = {};
          while (!ended && fstat(STDOUT_FILENO, &grown) == 0 && grown.st_size < enough) {
            std::this_thread::yield();
          }
          setCancel();
        });
      }
    };
    EXPECT_EQ(-6004, Run(image, {kAnswering, 0, {{0}}}));
    ended = true;
    canceller.join();
    EXPECT_EQ("Successfully distributed...", log_[log_.size() - 2]);
    EXPECT_EQ("Cancel...", log_.back());
    EXPECT_EQ(2U, written_.size());
  }
}

// Only bytes from the file are sent. The printer still waits for the rest, so it does not answer.
TEST_F(DownloadTest, ImageThatShrinksDuringTheDownload) {
  const Download image = {"", kFirmware.run, ImageOf({200000, 10})};
  const Bytes kept(image.content.begin(), image.content.begin() + 150000);
  on_write_ = [&](int write) {
    if (write == 2) {
      MakeFile(kept);
    }
  };
  EXPECT_EQ(0, Run(image));
  EXPECT_EQ("failed: ReadData failed...", log_.back());
  Bytes sent;
  for (size_t write = 1; write < written_.size(); ++write) {
    Append(&sent, written_[write]);
  }
  EXPECT_EQ(kept, sent);
  EXPECT_NE(std::find(log_.begin(), log_.end(), "progress 99"), log_.end()) << "progress counts the announced size";
}

// YModem reads the file after the handshake.
TEST_F(DownloadTest, YModemFileThatShrinksBeforeItIsRead) {
  on_write_ = [&](int write) {
    if (write == 2) {
      MakeFile(FileContent(100'000));
    }
  };
  EXPECT_EQ(-1, Run({"", kYModem.run, FileContent(200'000)}));
  EXPECT_EQ("failed:Read File Failed...", log_.back());
  EXPECT_EQ(3U, written_.size());
}

TEST_F(DownloadTest, YModemCutsLongFileNames) {
  constexpr size_t kNameRoom = 128 - 2 - 4;  // The rest holds two zeros and "1500".
  for (const size_t length : {kNameRoom, kNameRoom + 1, size_t{300}}) {
    MakeFile(kYModem.content);
    std::string name = "/";
    while (name.size() + file_.size() < length) {
      name += name.size() + file_.size() + 2 <= length ? "./" : "/";
    }
    name += file_;
    ASSERT_EQ(length, name.size());
    RunWith(kYModem, name.c_str());
    const std::string data(written_[2].begin() + 3, written_[2].end() - 2);
    EXPECT_EQ(name.substr(0, kNameRoom) + '\0' + "1500" + '\0', data);
  }
}

}  // namespace
}  // namespace vexo::test
