// Text formats of the virtual printer: console commands, options, file names and trace.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>

#include "virtual_printer/app/console_command.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/model/report_frames.h"
#include "virtual_printer/wire/connection_faults.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {
namespace {

using Kind = ConsoleCommand::Kind;

std::string Hex(const Bytes& bytes) {
  std::string hex;
  for (const auto byte : bytes) {
    hex += HexText(byte, 2);
  }
  return hex;
}

TEST(ConsoleLine, ValidAndInvalidLines) {
  const struct {
    const char* line;
    std::optional<ConsoleCommand> expected;
    const char* error = "";
  } rows[] = {
      {"  start\t0007 \r", {{Kind::kStart, 7, {}, false}}},
      {"status 0xfF", {{Kind::kStatus, 255, {}, false}}},
      {"garbage 65536", {{Kind::kGarbage, 65536, {}, false}}},
      {"split on", {{Kind::kSplit, 0, {}, true}}},
      {" \r", {}},
      {"Start 7", {}, "unknown command; help shows all"},
      {"end 7 4294967296", {}, "usage: end N [VALUE]"},
      {"garbage 65537", {}, "usage: garbage [BYTES]"},
      {"silent maybe", {}, "usage: silent on|off"},
  };
  const auto fields = [](const ConsoleCommand& c) { return std::make_tuple(c.kind, c.number, c.value, c.on); };
  for (const auto& row : rows) {
    std::string error;
    const auto command = ParseConsoleLine(row.line, &error);
    EXPECT_EQ(error, row.error) << row.line;
    ASSERT_EQ(command.has_value(), row.expected.has_value()) << row.line;
    EXPECT_TRUE(!command || fields(*command) == fields(*row.expected)) << row.line;
  }
}

TEST(DownloadFault, InvalidTextsAreRefused) {
  for (const char* text : {"", "drop", "drop@", "@1", "dropp@1", "drop@-1", "drop@1x", "drop@1x0", "drop@x2",
                           "drop@1x2x", "drop@4294967296", "drop@mode1"}) {
    EXPECT_FALSE(ParseDownloadFault(text)) << text;
  }
}

TEST(DownloadFileName, NeverLeavesTheFolder) {
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

TEST(Trace, WrapsBytesUnderTheFirstRow) {
  const WireEvent event = {1, WireEvent::Direction::kReceived, {Bytes(17, 0xAB), "words"}};
  EXPECT_EQ(FormatTraceEntry(std::chrono::milliseconds(1234), event),
            "    1.234 #1 -> AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB  words\n"
            "                AB\n");
}

TEST(SplitAnswer, IsDelayedOnlyOnce) {
  std::string pieces;
  for (const AnswerPiece& piece :
       PlanAnswer({false, std::chrono::milliseconds(70), kDefaultSplitPause, {}}, {1, 2, 3})) {
    pieces += std::to_string(piece.pause.count()) + ":" + Hex(piece.bytes) + " ";
  }
  EXPECT_EQ(pieces, "70:01 5:02 5:03 ");
}

// Other frames are tested by decoding them with the library, in tests/core.
TEST(ReportFrames, JobStateAndV2Answer) {
  EXPECT_EQ(Hex(JobState(0).bytes), "1B1C26205631207265706F7274020105000030303030");
  EXPECT_EQ(Hex(TaskOver(7).bytes),
            "1B1C26205632000000300000000000000000"
            "67657476616C20227461736B5F6F766572220D0A00010000"
            "7461736B2533443030303725334273746174652533446F6B");
}

TEST(NetworkScan, QuestionDependsOnThePortAndTheAnswerIsShort) {
  const std::string question = "getval \"printer_message\"";
  const std::string command = "\x1B\x1C& V1 " + question + "\r\n";
  const std::tuple<std::string, bool, bool> rows[] = {
      {question, true, false},
      {command + "\"192.168.1.7\"\r\n", false, true},
      {command.substr(0, 32), false, false},
      {"x" + question, false, false},
  };
  for (const auto& [datagram, receipt, label] : rows) {
    EXPECT_EQ(IsScanQuestion(ScanKind::kReceiptPrinters, datagram), receipt) << datagram;
    EXPECT_EQ(IsScanQuestion(ScanKind::kLabelPrinters, datagram), label) << datagram;
  }
  const std::string text(32, 'x');
  EXPECT_LE(ScanAnswer({text, text, 200, {250, 250, 250, 250}}).bytes.size(), 255U) << "must fit a host's record";
}

}  // namespace
}  // namespace virtual_printer
