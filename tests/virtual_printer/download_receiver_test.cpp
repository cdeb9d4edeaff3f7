#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "test_hosts.h"
#include "virtual_printer/download_faults.h"
#include "virtual_printer/download_name.h"
#include "virtual_printer/printer_model.h"

namespace virtual_printer {
namespace {

// What a host sends in one go, and the answer that it waits for: hexadecimal digits, with `|` between messages.
struct Step {
  std::string sent;
  std::string answer;
};
using Steps = std::vector<Step>;

const std::string kReconnect = "reconnect";  // In place of bytes.
const std::string kResetCommand = V1("do \"reset_printer\"");
const Step kReset = {kResetCommand, ""};
const Step kDfu = {V1("do \"dfu\""), ""};
const Step kFileMode = {"\x12\x46", "4F4B"};
const Step kFontMode = {V1("do \"font_download_quick\""), "4F4B"};
const Step kEndOfFont = {"^END", ""};
const Step kLoaderMode = {"\x1D\x75\x55\xAA", ""};

std::string Number(std::size_t value, int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) {
    text += static_cast<char>(value & 0xFF);
  }
  return text;
}

std::size_t Sum(const std::string& text) {
  return std::accumulate(text.begin(), text.end(), std::size_t{0},
                         [](std::size_t sum, char byte) { return sum + static_cast<unsigned char>(byte); });
}

// Bytes that differ from place to place, so that nothing can be exchanged unnoticed.
std::string Content(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += static_cast<char>(i * 7 + i / 256);
  }
  return text;
}

std::string Package(std::size_t index, const std::string& data, std::size_t area, char filler = '\0') {
  std::string package = "\xDD\xCC\xBB\xAA" + Number(index, 4) + Number(data.size(), 2) + data;
  package.resize(area + 10, filler);
  return package + Number(Sum(package), 2);
}

std::string Acknowledgement(int index, int result = 0) {
  const std::string echo = "\xDD\xCC\xBB\xAA" + Number(index, 4);
  const std::string answer = echo + Number(result, 2) + Number(Sum(echo), 2);
  return Hex(Bytes(answer.begin(), answer.end()));
}

Step Acknowledged(std::size_t index, const std::string& data, std::size_t area, char filler = '\0') {
  return {Package(index, data, area, filler), Acknowledgement(static_cast<int>(index))};
}

// The remainder of the long division of the text, with two zero bytes behind it, by the polynomial.
std::size_t Crc(const std::string& text) {
  std::size_t remainder = 0;
  for (const char byte : text + std::string(2, '\0')) {
    for (int bit = 7; bit >= 0; --bit) {
      remainder = remainder << 1 | ((static_cast<unsigned char>(byte) >> bit) & 1);
      remainder ^= (remainder & 0x10000) != 0 ? 0x11021 : 0;
    }
  }
  return remainder;
}

std::string Block(char kind, std::size_t number, std::string text, std::size_t size, char filler = '\0') {
  text.resize(size, filler);
  return kind + Number(number, 1) + Number(255 - number % 256, 1) + text + Number(Crc(text), 2);
}
std::string Data(std::size_t index, const std::string& text, char filler = '\0') {
  return Block('\x02', index + 1, text, 1024, filler);
}
Step Header(const std::string& name, const std::string& size) {
  return {Block('\x01', 0, name + '\0' + size + '\0', 128), "0643"};
}
const Step kStart = {"1", "43"};
const Step kEndOfFile = {"\x04", "06"};
const Step kClosing = {Block('\x01', 0, "", 128), "06"};
const Step kEndOfSession = {"3", ""};

std::string SegmentHeader(std::size_t length) { return "VEXO" + Number(length, 4) + std::string(68, 'h'); }

Steps operator+(Steps first, const Steps& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// The steps with others before one of them: what goes wrong first.
Steps Before(const Steps& steps, std::size_t at, const Steps& wrong) {
  const auto here = steps.begin() + static_cast<std::ptrdiff_t>(at);
  return Steps(steps.begin(), here) + wrong + Steps(here, steps.end());
}

// From the handshake to the reset, in a loader that is running.
Steps Ymodem(const std::string& data) {
  Steps steps = {kStart, Header("C:\\logo.bmp", std::to_string(data.size()))};
  for (std::size_t index = 0; index * 1024 < data.size(); ++index) {
    steps.push_back({Data(index, data.substr(index * 1024, 1024), 'x'), "06"});
  }
  return steps + Steps{kEndOfFile, kClosing, kEndOfSession, kReset};
}

constexpr PrinterMode kPrinter = PrinterMode::kOrdinary;
constexpr PrinterMode kYmodem = PrinterMode::kYmodemLoader;
constexpr PrinterMode kFirmware = PrinterMode::kFirmwareLoader;

struct Scenario {
  std::string name;
  Steps steps;
  std::vector<std::string> downloads = {};  // What the printer has in the end.
  PrinterMode mode = kPrinter;
  std::vector<std::string> faults = {};
};

PrinterSetup SetupOf(const Scenario& scenario) {
  PrinterSetup setup;
  setup.downloads.mode = scenario.mode;
  for (const std::string& fault : scenario.faults) {
    setup.downloads.faults.push_back(*ParseDownloadFault(fault));
  }
  return setup;
}

// A printer and a host that does what a scenario says, its bytes cut into pieces.
class Site {
 public:
  explicit Site(const Scenario& scenario) : shop_(SetupOf(scenario)) {}

  // Gives the answer, which may come a while later.
  std::string Send(const std::string& bytes, std::size_t piece) {
    std::string answer;
    dropped_ = bytes == kReconnect;
    for (std::size_t offset = 0; offset < bytes.size() && !dropped_; offset += piece) {
      Note(shop_.SendRaw(1, bytes.substr(offset, piece)), answer);
    }
    while (const auto deadline = shop_.model.NextDeadline()) {
      shop_.now = *deadline;
      Note(shop_.model.Advance(shop_.now), answer);
    }
    if (dropped_) {
      shop_.Leave(1);
      shop_.model.Connect(1);
    }
    return answer;
  }

  std::vector<std::string> downloads;

 private:
  void Note(const PrinterModel::Events& events, std::string& answer) {
    for (const WireEvent& event : events) {
      if (event.direction == WireEvent::Direction::kSent) {
        answer += (answer.empty() ? "" : "|") + Hex(event.message.bytes);
      }
    }
    PrinterOrders orders = shop_.model.TakeOrders();
    for (const auto& [connection, download] : orders.completed) {
      downloads.emplace_back(download.data.begin(), download.data.end());
    }
    dropped_ = dropped_ || orders.outage || !orders.dropped.empty();
  }

  Shop shop_;
  bool dropped_ = false;
};

const std::string kEven = Content(4096);
const std::string kShort = Content(30);
const std::string kManyBlocks = Content(258 * 1024 - 1);
const Steps kShortFile = {kFileMode, Acknowledged(0, kShort, 2048), kReset};
const Steps kShortFont = {kFontMode, Acknowledged(0, kShort, 1000), kEndOfFont, kReset};
const Steps kShortYmodem = Ymodem(kShort);
const Steps kTwoSegments = {
    kDfu, {SegmentHeader(3), "00"}, {"abc", "00"}, {kReconnect, ""}, {SegmentHeader(1), "00"}, {"d", "00"}, kReset};
const std::string kTwoSegmentImage = SegmentHeader(3) + "abc" + SegmentHeader(1) + "d";

// Beside those that the library makes, which whole conversations show.
const Scenario kGoodDownloads[] = {
    {"file of whole packages behind print data",
     {{"Total 9.99\n\x12\x46", "4F4B"},
      Acknowledged(0, kEven.substr(0, 2048), 2048),
      Acknowledged(1, kEven.substr(2048), 2048),
      kReset},
     {kEven}},
    {"font of one full package", {kFontMode, Acknowledged(0, kShort, 30), kEndOfFont, kReset}, {kShort}},
    {"ymodem blocks whose numbers wrap", Steps{kLoaderMode} + Ymodem(kManyBlocks), {kManyBlocks}},
    {"firmware, with an empty body in it",
     Before(kTwoSegments, 3, {{kReconnect, ""}, {SegmentHeader(0), "00|00"}}),
     {SegmentHeader(3) + "abc" + SegmentHeader(0) + SegmentHeader(1) + "d"}},
};

std::string Corrupted(std::string bytes, std::size_t at) {
  bytes.at(at) = static_cast<char>(bytes[at] ^ 1);
  return bytes;
}

// A package that claims more bytes than its data area has.
std::string Overfull() {
  std::string package = Package(0, std::string(2048, 'x'), 2048);
  package.replace(8, 2, Number(2049, 2)).resize(package.size() - 2);
  return package + Number(Sum(package), 2);
}

const Step& kPackage = kShortFile[1];
const Step& kFontPackage = kShortFont[1];
const Step& kHeader = kShortYmodem[1];
const Step& kBlock = kShortYmodem[2];
const std::string kRefusedPackage = Acknowledgement(0, 1);

Step Answered(const Step& step, const std::string& answer) { return {step.sent, answer}; }

// Sent before the only package of a file, or before a step of a YModem session, which refuses it.
Scenario WrongPackage(const std::string& name, const std::string& sent, const std::string& answer = kRefusedPackage) {
  return {name, Before(kShortFile, 1, {{sent, answer}}), {kShort}};
}
Scenario WrongBlock(const std::string& name, std::size_t step, const std::string& sent) {
  return {name, Before(kShortYmodem, step, {{sent, "15"}}), {kShort}, kYmodem};
}

const Scenario kHostErrors[] = {
    WrongPackage("wrong checksum", Corrupted(kPackage.sent, 500)),
    WrongPackage("wrong magic", Corrupted(kPackage.sent, 3), "DDCCBBAB0000000001000F03"),
    WrongPackage("half a package", kPackage.sent.substr(0, 900)),
    WrongPackage("more bytes than fit", Overfull()),
    WrongPackage("packages out of order", Package(1, kShort, 2048), Acknowledgement(1, 1)),
    WrongPackage("package repeated", kPackage.sent, kPackage.answer),
    {"font without an end", {kFontMode, kFontPackage, kReset}},
    {"another command gives a file up", Before(kShortFile, 2, {{kOff, ""}})},
    {"connection lost in a file", Before(kShortFile, 2, {{kReconnect, ""}})},
    WrongBlock("wrong CRC", 2, Corrupted(kBlock.sent, 500)),
    WrongBlock("CRC high byte first", 2, kBlock.sent.substr(0, 1027) + kBlock.sent[1028] + kBlock.sent[1027]),
    WrongBlock("wrong block number", 2, Data(1, kShort)),
    WrongBlock("half a block", 2, kBlock.sent.substr(0, 1000)),
    WrongBlock("end before the data", 2, "\x04"),
    WrongBlock("header without a size", 1, Header("a", "").sent),
    WrongBlock("absurd size", 1, Header("a", "99999999999").sent),
    {"block repeated, and one beyond the size",
     Before(kShortYmodem, 3, {kBlock, {Data(1, "more"), "06"}}),
     {kShort},
     kYmodem},
    {"noise in the loader", Before(kShortYmodem, 0, {{"\x1D\x75\x55\xAA\x12\x46", ""}}), {kShort}, kYmodem},
    {"connection lost in a firmware body", {kDfu, {SegmentHeader(3), "00"}, {"ab", ""}, {kReconnect, ""}, kReset}},
    {"firmware begun again in the loader",
     Steps{{SegmentHeader(1), "00"}, {"x", "00"}, {kReconnect, ""}} + kTwoSegments,
     {kTwoSegmentImage},
     kFirmware},
    {"absurd body", Before(kTwoSegments, 1, {{SegmentHeader(0xFFFFFFFF), "01"}}), {kTwoSegmentImage}, kFirmware},
};

// A scenario of an ordinary printer with these faults.
Scenario Faulty(const std::string& name, const std::vector<std::string>& faults, const Steps& steps,
                const std::vector<std::string>& downloads = {}) {
  return {name, steps, downloads, kPrinter, faults};
}

const Scenario kFaults[] = {
    Faulty("refused twice", {"refuse@0x2"},
           Before(kShortFile, 1, {Answered(kPackage, kRefusedPackage), Answered(kPackage, kRefusedPackage)}), {kShort}),
    Faulty("wrong echo", {"wrong-echo@0"}, Before(kShortFile, 1, {Answered(kPackage, Acknowledgement(1))}), {kShort}),
    Faulty("silence, then a split answer", {"silence@0", "split@0"},
           Before(kShortFont, 1, {Answered(kFontPackage, ""), Answered(kFontPackage, "DDCCBBAA0000|000000000E03")}),
           {kShort}),
    Faulty("dropped", {"drop@0"}, {kFileMode, Answered(kPackage, ""), kReset}),
    Faulty("file mode refused", {"refuse@mode"}, Before(kShortFile, 0, {Answered(kFileMode, "4E4F")}), {kShort}),
    Faulty("loader refused", {"refuse@mode"}, Steps{kLoaderMode} + kShortFile, {kShort}),
    Faulty("dropped without a loader", {"drop@mode"}, Steps{kDfu} + kShortFile, {kShort}),
    {"each step of a ymodem session refused",
     {Answered(kStart, "15"), kStart, Answered(kHeader, "15"), kHeader, Answered(kBlock, "15"), kBlock,
      Answered(kEndOfFile, "15"), kEndOfFile, Answered(kClosing, "15"), kClosing, kEndOfSession, kReset},
     {kShort},
     kYmodem,
     {"refuse@handshake", "nak@header", "nak@0", "nak@end", "nak@closing"}},
    {"each step of a ymodem session unanswered or in pieces",
     {Answered(kStart, ""), kStart, Answered(kHeader, "06|43"), Answered(kBlock, ""), kBlock, Answered(kEndOfFile, ""),
      kEndOfFile, Answered(kClosing, ""), kClosing, kEndOfSession, kReset},
     {kShort},
     kYmodem,
     {"silence@handshake", "split@header", "silence@0", "silence@end", "silence@closing"}},
    Faulty("firmware header refused", {"refuse@2"}, Before(kTwoSegments, 4, {Answered(kTwoSegments[4], "01")}),
           {kTwoSegmentImage}),
    Faulty("firmware body unanswered", {"silence@1"}, {kDfu, kTwoSegments[1], Answered(kTwoSegments[2], ""), kReset},
           {SegmentHeader(3) + "abc"}),
};

template <std::size_t kCount>
void RunAll(const Scenario (&scenarios)[kCount]) {
  for (const Scenario& scenario : scenarios) {
    for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{1}}) {
      SCOPED_TRACE(scenario.name + ", in pieces of " + std::to_string(piece));
      Site site(scenario);
      for (const Step& step : scenario.steps) {
        EXPECT_EQ(site.Send(step.sent, piece), step.answer) << "step " << &step - scenario.steps.data();
      }
      EXPECT_TRUE(site.downloads == scenario.downloads) << site.downloads.size() << " downloads";
    }
  }
}

TEST(Downloads, ArriveAsTheyWereSent) { RunAll(kGoodDownloads); }
TEST(Downloads, SurviveWhatHostsAndLinesDoWrong) { RunAll(kHostErrors); }
TEST(Downloads, GoWrongOnRequest) { RunAll(kFaults); }

TEST(Downloads, EndInARestart) {
  PrinterSetup setup;
  setup.downloads.loader_delay = std::chrono::milliseconds(70);
  setup.downloads.restart_time = std::chrono::milliseconds(40);
  Shop shop(setup, /*hosts=*/2);
  const std::string set_width = V1("setkey") + std::string("\x01\xCC\x00\x02\x80\x02", 6);
  shop.Send(1, set_width + "Total 9.99\n");
  shop.Send(1, kLoaderMode.sent + "lost");
  const Outage loader = *shop.model.TakeOrders().outage;
  EXPECT_EQ(loader.back_as, kYmodem);
  EXPECT_EQ(loader.duration, setup.downloads.loader_delay);
  EXPECT_EQ(shop.Send(2, set_width), Transcript{}) << "the printer has left the network";

  shop.Leave(1);
  shop.model.Connect(1);
  EXPECT_EQ(shop.Send(1, set_width), Transcript{"1> setkey (unknown to the loader)"});
  shop.Send(1, kResetCommand);
  const Outage restart = *shop.model.TakeOrders().outage;
  EXPECT_EQ(restart.back_as, kPrinter);
  EXPECT_EQ(restart.duration, setup.downloads.restart_time);
  EXPECT_EQ(shop.model.State().current.print_width, kDefaultPrintWidth);
}

TEST(DownloadFaults, AreReadFromText) {
  for (const char* text : {"", "drop", "drop@", "@1", "dropp@1", "drop@-1", "drop@1x", "drop@1x0", "drop@x2",
                           "drop@1x2x", "drop@4294967296", "drop@mode1"}) {
    EXPECT_FALSE(ParseDownloadFault(text)) << text;
  }
}

TEST(DownloadName, NeverLeadsOutOfTheFolder) {
  const struct {
    DownloadKind kind;
    std::string host_name;
    int number;
    std::string expected;
  } rows[] = {
      {DownloadKind::kFile, "ignored", 3, "file-3.bin"},
      {DownloadKind::kYmodem, "C:\\data\\logo.bmp", 1, "ymodem-logo.bmp.bin"},
      {DownloadKind::kYmodem, "../../etc/passwd", 2, "ymodem-passwd-2.bin"},
      {DownloadKind::kYmodem, "a b\n\xE4*", 1, "ymodem-a_b___.bin"},
      {DownloadKind::kYmodem, "C:nul", 1, "ymodem-nul.bin"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(DownloadFileName({row.kind, row.host_name, {}}, row.number), row.expected);
  }
}

}  // namespace
}  // namespace virtual_printer
