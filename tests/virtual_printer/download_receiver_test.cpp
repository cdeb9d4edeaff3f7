// What the printer makes of downloads that the library would not send. Those that it sends, and the faults that the
// printer is told to make, are in the whole conversations.
#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "test_hosts.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/model/printer_model.h"

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
const std::string kLoaderMode = "\x1D\x75\x55\xAA";
const Step kReset = {kResetCommand, ""};
const Step kFileMode = {"\x12\x46", "4F4B"};

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

std::string Package(std::size_t index, const std::string& data, std::size_t announced) {
  std::string package = "\xDD\xCC\xBB\xAA" + Number(index, 4) + Number(announced, 2) + data;
  return package + Number(Sum(package), 2);
}

std::string Confirmation(std::size_t index, int result) {
  const std::string echo = "\xDD\xCC\xBB\xAA" + Number(index, 4);
  const std::string answer = echo + Number(static_cast<std::size_t>(result), 2) + Number(Sum(echo), 2);
  return Hex(Bytes(answer.begin(), answer.end()));
}

std::string SegmentHeader(std::size_t length) { return "VEXO" + Number(length, 4) + std::string(68, 'h'); }

// A printer and a host, whose bytes are cut into pieces.
class Site {
 public:
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
    SideEffects side_effects = shop_.model.TakeSideEffects();
    for (const auto& [connection, download] : side_effects.completed) {
      downloads.emplace_back(download.data.begin(), download.data.end());
    }
    dropped_ = dropped_ || side_effects.outage || !side_effects.dropped.empty();
  }

  Shop shop_;
  bool dropped_ = false;
};

const std::string kContent(2048, 'x');
const Step kPackage = {Package(0, kContent, 2048), Confirmation(0, 0)};
const Step kNextPackage = {Package(1, kContent, 2048), Confirmation(1, 0)};
const Step kSegment = {SegmentHeader(3), "00"};

const struct {
  const char* name;
  Steps steps;
  std::vector<std::string> downloads;  // What the printer has in the end.
} kScenarios[] = {
    {"file of whole packages behind print data",
     {{"Total 9.99\n\x12\x46", "4F4B"}, kPackage, kNextPackage, kReset},
     {kContent + kContent}},
    {"packages that are out of order, cut off, overfull and repeated",
     {kFileMode,
      {kNextPackage.sent, Confirmation(1, 1)},
      {kPackage.sent.substr(0, 900), Confirmation(0, 1)},
      {Package(0, kContent, 2049), Confirmation(0, 1)},
      kPackage,
      kPackage,
      kReset},
     {kContent}},
    {"file given up for another command", {kFileMode, kPackage, {kOff, ""}, kReset}, {}},
    {"file begun again", {kFileMode, kPackage, kFileMode, kPackage, kReset}, {kContent}},
    {"connection lost in a file", {kFileMode, kPackage, {kReconnect, ""}, kReset}, {}},
    {"font of one full package, first without its end",
     {{V1("do \"font_download_quick\""), "4F4B"},
      kPackage,
      kReset,
      {V1("do \"font_download_quick\""), "4F4B"},
      kPackage,
      {"^END", ""},
      kReset},
     {kContent}},
    {"loader that is asked for nothing it knows",
     {{kLoaderMode, ""}, {"\x1D\x75\x55\xAA\x12\x46", ""}, {"1", "43"}, {"\x04", "15"}, {"1", "43"}},
     {}},
    {"firmware, with an absurd and an empty body in it",
     {{V1("do \"dfu\""), ""},
      {SegmentHeader(0xFFFFFFFF), "01"},
      kSegment,
      {"abc", "00"},
      {kReconnect, ""},
      {SegmentHeader(0), "00|00"},
      kReset},
     {SegmentHeader(3) + "abc" + SegmentHeader(0)}},
    {"connection lost in a firmware body",
     {{V1("do \"dfu\""), ""}, kSegment, {"ab", ""}, {kReconnect, ""}, kReset},
     {}},
};

TEST(Downloads, SurviveWhatHostsAndLinesDoWrong) {
  for (const auto& scenario : kScenarios) {
    for (const std::size_t piece : {std::size_t{1} << 20, std::size_t{1}}) {
      SCOPED_TRACE(scenario.name + std::string(", in pieces of ") + std::to_string(piece));
      Site site;
      for (const Step& step : scenario.steps) {
        EXPECT_EQ(site.Send(step.sent, piece), step.answer) << "step " << &step - scenario.steps.data();
      }
      EXPECT_TRUE(site.downloads == scenario.downloads) << site.downloads.size() << " downloads";
    }
  }
}

TEST(Downloads, EndInARestart) {
  PrinterSetup setup;
  setup.downloads.loader_delay = std::chrono::milliseconds(70);
  setup.downloads.restart_time = std::chrono::milliseconds(40);
  Shop shop(setup, /*hosts=*/2);
  const std::string set_width = V1("setkey") + std::string("\x01\xCC\x00\x02\x80\x02", 6);
  shop.Send(1, set_width + "Total 9.99\n");
  shop.Send(1, kLoaderMode + "lost");
  const Outage loader = *shop.model.TakeSideEffects().outage;
  EXPECT_EQ(loader.back_as, PrinterMode::kYmodemLoader);
  EXPECT_EQ(loader.duration, setup.downloads.loader_delay);
  EXPECT_EQ(shop.Send(2, set_width), Transcript{}) << "the printer has left the network";

  shop.Leave(1);
  shop.model.Connect(1);
  EXPECT_EQ(shop.Send(1, set_width), Transcript{"1> setkey (unknown to the loader)"});
  shop.Send(1, kResetCommand);
  const Outage restart = *shop.model.TakeSideEffects().outage;
  EXPECT_EQ(restart.back_as, PrinterMode::kOrdinary);
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
  const std::tuple<DownloadKind, std::string, int, std::string> rows[] = {
      {DownloadKind::kFile, "ignored", 3, "file-3.bin"},
      {DownloadKind::kYmodem, "C:\\data\\logo.bmp", 1, "ymodem-logo.bmp.bin"},
      {DownloadKind::kYmodem, "../../etc/passwd", 2, "ymodem-passwd-2.bin"},
      {DownloadKind::kYmodem, "a b\n\xE4*", 1, "ymodem-a_b___.bin"},
      {DownloadKind::kYmodem, "C:nul", 1, "ymodem-nul.bin"},
  };
  for (const auto& [kind, host_name, number, expected] : rows) {
    EXPECT_EQ(DownloadFileName({kind, host_name, {}}, number), expected);
  }
}

}  // namespace
}  // namespace virtual_printer
