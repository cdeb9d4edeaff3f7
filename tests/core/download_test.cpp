// The four downloads, on the virtual clock, into a whole virtual printer. Of each the account is compared: every line
// of the trace, every call of the port with its length, every pause and every percentage, in their order.
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

using Account = std::vector<std::string>;
using Pieces = std::vector<Bytes>;

// What goes wrong in a download.
enum FaultKind {
  kNone,
  kFailingWrite,
  kCancelledAtWrite,
  kCancelledAtProgress,
  kLosingTheHandle,    // At a write: another thread closes it.
  kDamagingTheHandle,  // At a write: its magic goes.
  kRefusedConnects,    // So many.
  kAnswering,          // With these pieces instead of that answer.
  kOvercounting,       // USB ports count the bytes of a longer packet.
  kReadingFails,
  kWithoutProgress,
};

struct Fault {
  bool Is(FaultKind other, int at) const { return kind == other && index == at; }

  FaultKind kind = kNone;
  int index = 0;  // Of the write, the answer or the progress, counted from 0.
  Pieces instead = {};
};

std::function<void(int32_t percentage)> g_on_progress;

Bytes FileContent(size_t size) {
  Bytes content(size);
  for (size_t i = 0; i < size; ++i) {
    content[i] = static_cast<uint8_t>(i % 251 + 1);  // No block looks like its neighbour.
  }
  return content;
}

// Segments with such bodies.
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

// As a line of an account: short ones byte by byte, commands as text.
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

  // Runs the download of a file with its content, from a USB port that is open.
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
    account_.clear();
    written_.clear();
    stored_.clear();
    to_host_.clear();
    answers_ = connects_ = 0;
    slept_ = told_ = 0;
    progress_ = 0;
    DriverScript script;
    script.during = [this](const std::string& call) { Note(call.substr(call.find(' ') + 1)); };
    script.on_open = [this] { return Connect(); };
    script.on_write = [this](const uint8_t* bytes, uint32_t length) { return Receive(Bytes(bytes, bytes + length)); };
    script.on_read = [this](uint8_t* buffer, uint32_t room) { return Send(buffer, room); };
    script.read_failure = fault.kind == kReadingFails ? VEXO_ERROR_IO_READ : VEXO_OK;
    SetDriverScript(script);
    g_on_progress = [this](int32_t percentage) {
      const UncountedAllocations uncounted;
      Note("progress " + std::to_string(percentage));
      if (fault_.Is(kCancelledAtProgress, progress_++)) {
        setCancel();
      }
    };
    ::testing::internal::CaptureStdout();
    constexpr DownloadProgressCallback kProgress = [](int32_t percentage) { g_on_progress(percentage); };
    const int32_t code = download.run(&handle_, file, fault.kind == kWithoutProgress ? nullptr : kProgress);
    Note("");
    ::testing::internal::GetCapturedStdout();
    return code;
  }

  // What the account of a run with a fault has in place of a part of the sound one: after how many lines, and what;
  // "..." stands for the rest of the sound one, if more of it follows.
  std::string Since(const Account& sound) const {
    const auto [usual, mine] = std::mismatch(sound.begin(), sound.end(), account_.begin(), account_.end());
    auto end = account_.end();
    for (auto last = sound.end(); last != usual && end != mine && *(last - 1) == *(end - 1); --last) {
      --end;
    }
    return std::to_string(mine - account_.begin()) + ":" + Shortened(Account(mine, end)) +
           (end != account_.end() ? " ..." : "");
  }

  // What repeats stands once: "3 x (a; b)".
  static std::string Shortened(const Account& lines) {
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
  Account account_;
  Pieces written_;
  Pieces stored_;
  int connects_ = 0;
  std::function<void(int write)> on_write_ = {};

 private:
  // First what has been slept and traced since the last time.
  void Note(const std::string& line) {
    const std::vector<uint32_t> sleeps = RecordedSleeps();
    for (; slept_ < sleeps.size(); ++slept_) {
      account_.push_back("sleep " + std::to_string(sleeps[slept_]));
    }
    char traced[512];
    for (ssize_t count = 0; (count = pread(STDOUT_FILENO, traced, sizeof(traced), static_cast<off_t>(told_))) > 0;
         told_ += static_cast<size_t>(count)) {
      trace_.append(traced, static_cast<size_t>(count));
    }
    for (size_t end = 0; (end = trace_.find('\n')) != std::string::npos; trace_.erase(0, end + 1)) {
      account_.push_back(Plain(trace_.substr(0, end)));
    }
    if (!trace_.empty()) {  // Some end without a line end.
      account_.push_back(Plain(std::exchange(trace_, {})));
    }
    if (!line.empty()) {
      account_.push_back(line);
    }
  }

  std::string Plain(std::string line) const {
    const size_t name = line.find(file_);
    return name != std::string::npos ? line.replace(name, file_.size(), "FILE") : line;
  }

  int32_t Connect() {
    if (++connects_ <= (fault_.kind == kRefusedConnects ? fault_.index : 0)) {
      return VEXO_ERROR_IO_OPEN_FAILED;
    }
    model_->Disconnect(connection_, now_);
    now_ += std::chrono::seconds(10);  // However long the printer takes to be another.
    model_->Connect(++connection_);
    return VEXO_OK;
  }

  int32_t Receive(const Bytes& bytes) {
    const int write = static_cast<int>(written_.size());
    written_.push_back(bytes);
    account_.back() = "Write " + Show(bytes);
    if (on_write_) {
      on_write_(write);
    }
    if (fault_.Is(kCancelledAtWrite, write)) {
      setCancel();
    }
    handle_.portOpen = fault_.Is(kLosingTheHandle, write) ? 0 : handle_.portOpen;
    handle_.magic = fault_.Is(kDamagingTheHandle, write) ? 1 : handle_.magic;
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

  void Answer(const Bytes& sound) {
    const Pieces pieces = fault_.Is(kAnswering, answers_++) ? fault_.instead : Pieces{sound};
    to_host_.insert(to_host_.end(), pieces.begin(), pieces.end());
  }

  // A piece at a time, as reads find them.
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
  size_t slept_ = 0;
  size_t told_ = 0;
};

const char* const kFileAccount =
    R"(filename =FILE | totalFileSize =3000 | Enter Upgrade mode... | ReadAvailable 512 | Write 12 46 | Read 2
ReadAvailable 512 | Ready to send file... | progress 0 | package 0 | Write 2060 bytes | sleep 20 | Read 12
progress 0 | package 1 | Write 2060 bytes | sleep 20 | Read 12 | progress 50 | progress 100 | restart printer...
Write do "reset_printer" | Close | Completed...
)";

const char* const kFontAccount = R"(filename =FILE | totalFileSize =3001 | Enter Upgrade mode... | ReadAvailable 512
Write do "font_download_quick" | Read 2 | ReadAvailable 512 | Ready to send file... | progress 0 | package 0
Write 1512 bytes | sleep 20 | Read 12 | progress 0 | package 1 | Write 1512 bytes | sleep 20 | Read 12
progress 33 | package 2 | Write 1512 bytes | sleep 20 | Read 12 | progress 66 | progress 100
restart printer... | Write 5E 45 4E 44 | Write do "reset_printer" | Successfully restarted the device...
ReadAvailable 512 | Close | Completed...
)";

const char* const kFirmwareAccount =
    R"(filename =FILE | totalFileSize =1652 | Enter Upgrade mode... | ReadAvailable 512 | Write do "dfu"
ReadAvailable 512 | Close | Configure vexo:/dev/bus/NET/DEVICE?ip=dfu+port=9100 | Open | Write 76 bytes
sleep 200 | Read 1 | Successfully distributed... | Write 1024 bytes | progress 61 | Write 476 bytes
progress 90 | progress 100 | Read 1 | Successfully distributed... | Close
Configure vexo:/dev/bus/NET/DEVICE?ip=dfu+port=9100 | Open | Write 76 bytes | sleep 200 | Read 1
Successfully distributed... | progress 100 | Read 1 | Successfully distributed...
Download firmware complete... | Write do "reset_printer" | Successfully restarted the device...
ReadAvailable 512
)";

const char* const kYModemAccount =
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

// What stands between the bars and line ends.
Account Lines(const std::string& text) {
  Account lines;
  std::istringstream rows(text);
  for (std::string row; std::getline(rows, row);) {
    for (size_t end = 0; end != std::string::npos; row.erase(0, end != std::string::npos ? end + 3 : 0)) {
      end = row.find(" | ");
      lines.push_back(row.substr(0, end));
    }
  }
  return lines;
}

TEST_F(DownloadTest, TakeTheirStepsInOrder) {
  const std::pair<const Download&, const char*> rows[] = {
      {kFile, kFileAccount}, {kFont, kFontAccount}, {kFirmware, kFirmwareAccount}, {kYModem, kYModemAccount}};
  for (const auto& [download, account] : rows) {
    SCOPED_TRACE(download.name);
    EXPECT_EQ(0, Run(download));
    EXPECT_EQ(Lines(account), account_);
    EXPECT_EQ(Pieces{download.content}, stored_) << "what the printer has of it";
    const bool stays_open = &download == &kFirmware;
    EXPECT_EQ(stays_open ? 1 : 0, handle_.portOpen);
    EXPECT_EQ(stays_open ? 1 : 0, OpenDevices());
  }
}

// An answer to the first package of a file, sound but for the last bytes.
Bytes PackageAnswer(const Bytes& end) {
  Bytes answer = {0xDD, 0xCC, 0xBB, 0xAA, 0, 0, 0, 0, 0, 0, 0x0E, 0x03};
  std::copy(end.begin(), end.end(), answer.end() - static_cast<ptrdiff_t>(end.size()));
  return answer;
}

struct Row {
  Row(const Download& which, Fault what, int32_t result, int open_afterwards, const char* account)
      : download(which), fault(std::move(what)), code(result), open(open_afterwards), instead(account) {}

  const Download& download;
  Fault fault;
  int32_t code;
  int open;
  const char* instead;
};

TEST_F(DownloadTest, EndAsTheyShouldWhateverGoesWrong) {
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
      Row(kFile, {kLosingTheHandle, 0}, -6006, 0, "5: failed:Enter Mode Failed...;"),
      Row(kFile, {kLosingTheHandle, 1}, -6009, 0,
          "12: 3 x (failed:WriteData Failed...); failed:Slave Response Failed.........;"),
      Row(kFile, {kLosingTheHandle, 3}, -309, 0, "22: ..."),
      Row(kFile, {kDamagingTheHandle, 3}, -6, 1, "22: ..."),
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
      Row(kFont, {kLosingTheHandle, 4}, -309, 0, "27: Reboot device failed...;"),
      Row(kFont, {kLosingTheHandle, 5}, 0, 0, "29: ..."),
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
      Row(kFirmware, {kDamagingTheHandle, 0}, 0, 1, "5: Openfail;"),
      Row(kFirmware, {kLosingTheHandle, 2}, -309, 0, "15: failed: WriteData failed...;"),
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
      Row(kYModem, {kDamagingTheHandle, 0}, -6, 1,
          "5: sleep 1000; 20 x (sleep 500); 20 x (desc = NET,loader; retry to reconnect...); failed:Enter Mode "
          "Failed...;"),
      Row(kYModem, {kLosingTheHandle, 7}, 0, 0, "45: ..."),
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
  std::map<const Download*, Account> sound;
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.download.name << ", row " << &row - rows);
    Account& usual = sound[&row.download];
    if (usual.empty()) {
      Run(row.download);
      usual = account_;
    }
    EXPECT_EQ(row.code, Run(row.download, row.fault));
    EXPECT_EQ(row.open, handle_.portOpen);
    EXPECT_EQ(row.instead, Since(usual));
  }
}

// A file's last package ends in zeros; a font's, but for two bytes, in the end of the one before; a block in whatever
// the one before has left.
TEST_F(DownloadTest, FillUpTheirLastPiece) {
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

TEST_F(DownloadTest, CountTheirPiecesToTheLimits) {
  const Download rows[] = {
      {"3", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 1, f, nullptr, p); }, FileContent(3)},
      {"1", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 2048, f, nullptr, p); }, FileContent(2048)},
      {"2", [](auto* h, auto* f, auto p) { return DownloadFontFile(h, 65535, f, nullptr, p); }, FileContent(65536)},
      {"2", kFile.run, FileContent(2049)},
      {"2", kFile.run, FileContent(4096)},
      // An exact multiple is followed by one more block, and the numbers of blocks wrap.
      {"3", kYModem.run, FileContent(2048)},
      {"1", kYModem.run, FileContent(1023)},
      {"257", kYModem.run, FileContent(256 * 1024)}};
  for (const Download& row : rows) {
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(0, Run(row));
    EXPECT_EQ(Pieces{row.content}, stored_);
    EXPECT_EQ(std::stoi(row.name), std::count_if(account_.begin(), account_.end(), [](const std::string& line) {
                return line.rfind("package ", 0) == 0;
              }));
  }
}

// Only silence is waited for, and each download has its own words for an empty file.
TEST_F(DownloadTest, RefuseBadArgumentsBeforeAnythingIsSent) {
  const std::pair<const Download&, Account> rows[] = {{kFile, {"failed:file is null.file is null."}},
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
      EXPECT_EQ(Account{"error parameters."}, account_);
    }
    EXPECT_EQ(-6007, Run({"", download.run, {}}));
    EXPECT_EQ(2U, account_.size());
    EXPECT_EQ(of_empty_file.front(), account_.back());
    EXPECT_TRUE(written_.empty());
  }
  for (const auto& run : {+[](VexoPrinterHandle*h, const char*f, DownloadProgressCallback p) {
                            return DownloadFontFile(h, 0, f, nullptr, p);
                          },
                          +[](VexoPrinterHandle*h, const char*f, DownloadProgressCallback p) {
                            return DownloadFontFile(h, 65536, f, nullptr, p);
                          }}) {
    EXPECT_EQ(-1, Run({"", run, {1}}));
    EXPECT_EQ(Account{"error parameters."}, account_);
  }
}

TEST_F(DownloadTest, ForgetARequestToCancelFromBefore) {
  setCancel();
  EXPECT_EQ(0, Run(kFile));
}

TEST_F(DownloadTest, FindTheirPrinterAgain) {
  Download download = {"", [](auto* h, auto* f, auto p) { return downloadYModem(h, f, "USB", p); }, {1}};
  EXPECT_EQ(0, Run(download));
  EXPECT_EQ("USB Configure vexo:/dev/bus/USB/A1", DriverCalls().at(2)) << "the one with this serial number";
  download.run = [](auto* h, auto* f, auto p) { return downloadYModem(h, f, nullptr, p); };
  EXPECT_EQ(-6008, Run(download)) << "not in its loader";
  EXPECT_EQ((Account{"ReadAvailable 512", "Shake hands before sending..."}),
            Account(account_.begin() + 2, account_.begin() + 4));
  download = {"", [](auto* h, auto* f, auto p) { return DownloadFMWImg(h, f, nullptr, p); }, ImageOf({1})};
  EXPECT_EQ(0, Run(download));
  EXPECT_EQ("Openfail", account_.back());
}

// They are sent as the beginning of a header, and nothing follows them.
TEST_F(DownloadTest, EndAnImageThatEndsInAFewBytes) {
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

// Such an image has no other end: a host checks its images, or cancels.
TEST_F(DownloadTest, RepeatALineForAnImageThatDoesNotAddUpUntilCancelled) {
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
    EXPECT_EQ("Successfully distributed...", account_[account_.size() - 2]);
    EXPECT_EQ("Cancel...", account_.back());
    EXPECT_EQ(2U, written_.size());
  }
}

// Only its own bytes are sent; the printer, which waits for the others, is what fails.
TEST_F(DownloadTest, SendOfAnImageThatShrinksItsOwnBytesAlone) {
  const Download image = {"", kFirmware.run, ImageOf({200000, 10})};
  const Bytes kept(image.content.begin(), image.content.begin() + 150000);
  on_write_ = [&](int write) {
    if (write == 2) {
      MakeFile(kept);
    }
  };
  EXPECT_EQ(0, Run(image));
  EXPECT_EQ("failed: ReadData failed...", account_.back());
  Bytes sent;
  for (size_t write = 1; write < written_.size(); ++write) {
    Append(&sent, written_[write]);
  }
  EXPECT_EQ(kept, sent);
  EXPECT_NE(std::find(account_.begin(), account_.end(), "progress 99"), account_.end()) << "all of it counts as sent";
}

// A file that is read when the printer waits for it already.
TEST_F(DownloadTest, SendNothingOfAFileThatShrinksBeforeItIsRead) {
  on_write_ = [&](int write) {
    if (write == 2) {
      MakeFile(FileContent(100'000));
    }
  };
  EXPECT_EQ(-1, Run({"", kYModem.run, FileContent(200'000)}));
  EXPECT_EQ("failed:Read File Failed...", account_.back());
  EXPECT_EQ(3U, written_.size());
}

TEST_F(DownloadTest, CutNamesThatLeaveNoRoomForTheSize) {
  constexpr size_t kNameRoom = 128 - 2 - 4;  // Beside two zeros and "1500".
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
