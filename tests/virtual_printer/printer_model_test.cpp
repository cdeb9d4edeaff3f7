#include "virtual_printer/model/printer_model.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "test_hosts.h"
#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/wire/connection_faults.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {
namespace {

using std::chrono::milliseconds;

const std::string kClearRealTime = "\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08";
const std::string kPrefix = "\x1B\x1C& V1 ";
const std::string kSave = V1("do \"save_param_zone\"");
const std::string kStatus = V1("getval \"reprint_status\"");
const std::string kAskMonitoring = V1("getval \"job_monitor\"");

std::string SetKey(const std::string& record) { return V1("setkey") + record; }
std::string GetKey(const std::string& record) { return V1("getkey") + record; }
std::string SetWidth(const std::string& value) { return SetKey(std::string("\x01\xCC\x00\x02", 4) + value); }
const std::string kGetWidth = GetKey({"\x01\xCC\x00\x02", 4});
const std::string kUnknownKey = SetKey({"\x01\xCD\x00\x02\x80\x02", 6});

// What the printer understood, in words, and behind "<-" the bytes that it answered.
Transcript Send(Shop& shop, const std::string& bytes, int host = 1) {
  Transcript notes;
  for (const WireEvent& event : shop.SendRaw(host, bytes)) {
    const bool sent = event.direction == WireEvent::Direction::kSent;
    notes.push_back(sent ? "<-" + Hex(event.message.bytes) : event.message.text);
  }
  return notes;
}

const std::string kMonitoringOn = "setval \"job_monitor\" \"on\", by V1 reports";
const std::string kGsHMonitoringOn = "GS ( H, monitoring on, by 37 replies";
// Reports, type 259, of which the last byte counts; and one of type 260, with four bytes of status.
const std::string kDone = "<-1B1C26205631207265706F7274030102000001";
const std::string kIsOff = "<-1B1C26205631207265706F7274030102000000";
const std::string kStatusZero = "<-1B1C26205631207265706F7274040105000000000000";

const struct {
  const char* name;
  std::string sent;
  Transcript expected;
} kExchanges[] = {
    {"set, read and save, with a value that looks like a line end",
     SetWidth("\r\n") + kGetWidth + kSave,
     {"setkey key 0x00CC = 2573", "<-01CC00", "getkey key 0x00CC", "<-0D0A", "do \"save_param_zone\"", "<-00"}},
    {"settings that are refused, which fails the next save only",
     SetKey({"\x01\xCC\x01\x02\x80\x02", 6}) + SetKey({"\x01\xCC\x00\x03\x01\x02\x03", 7}) +
         SetKey({"\x01\xCC\x00\x01\x01", 5}) + SetKey("") + kSave + kSave,
     {"setkey key 0x01CC, 2 bytes (unknown key), refused", "setkey key 0x00CC, 3 bytes (wrong length), refused",
      "setkey key 0x00CC, 1 byte (wrong length), refused", "setkey without a record, refused", "do \"save_param_zone\"",
      "<-01", "do \"save_param_zone\"", "<-00"}},
    {"questions that are not answered",
     GetKey({"\x01\xCD\x00\x02", 4}) + GetKey({"\x01\xCC\x00\x04", 4}) + GetKey(""),
     {"getkey key 0x00CD (unknown key), not answered", "getkey key 0x00CC (wrong length), not answered",
      "getkey without a record, not answered"}},
    {"other verbs and actions",
     V1("setval \"tone\" \"on\"") + V1("do \"reset\x07\xC4\"") + V1("") + GsH("103") + kPrefix + "report",
     {"setval \"tone\" \"on\" (not simulated)", "do \"reset\\x07\\xC4\" (not simulated)", " (not simulated)",
      "GS ( H, 3 bytes (not simulated)", "report (not simulated)"}},
    {"print data that begins like commands", "9.99\n\x1B\x1B\x1C&\x1B", {"print data, 10 bytes"}},
    {"lines given up for commands of each form",
     kPrefix + "do \"a" + kClear + kPrefix + "do \"b" + GsH("103") + kPrefix + "do \"c\"\n\r",
     {"unfinished command, 12 bytes", "clear tasks, 0 waiting", kDone, "unfinished command, 12 bytes",
      "GS ( H, 3 bytes (not simulated)", "unfinished command, 15 bytes"}},
    {"the longest line", V1(std::string(247, 'y')), {std::string(247, 'y') + " (not simulated)"}},
    {"a line too long", V1(std::string(249, 'y')), {"command without a line end, 256 bytes", "print data, 2 bytes"}},
    {"a record cut off takes its length of what follows",
     SetKey({"\x01\xCC\x00", 3}) + kGetWidth + kGetWidth,
     {"setkey key 0x00CC, 27 bytes (wrong length), refused", "print data, 10 bytes"}},
    {"an absurd length may hold a command",
     std::string("\x1D(H\x00\x01", 5) + "A\x1D(H",
     {"print data, 6 bytes", "print data, 3 bytes"}},
    {"reset takes one line feed and answers it",
     GsH("200") + "\n\n" + GsH("200") + "A" + GsH("200"),
     {"GS ( H, task numbering reset", "<-372400", "print data, 1 byte",
      "GS ( H, task numbering reset, no answer wanted", "print data, 1 byte",
      "GS ( H, task numbering reset, no answer wanted"}},
    {"reset and clear answer in the manner of the monitoring",
     kClear + kClearRealTime + kOn + GsH("200") + "\n" + kClearRealTime + kGsHOn + GsH("200") + "\n" + kClear,
     {"clear tasks, 0 waiting", kDone, "clear tasks, 0 waiting", "<-372500", kMonitoringOn,
      "GS ( H, task numbering reset", kDone, "clear tasks, 0 waiting", kDone, kGsHMonitoringOn,
      "GS ( H, task numbering reset", "<-372400", "clear tasks, 0 waiting", "<-372500"}},
    {"monitoring is told, and other values change nothing",
     kAskMonitoring + kOn + V1("setval \"job_monitor\" \"Off\"") + kAskMonitoring + kOff + kAskMonitoring,
     {"getval \"job_monitor\"", kIsOff, kMonitoringOn, "setval \"job_monitor\" \"Off\" (not simulated)",
      "getval \"job_monitor\"", kDone, "setval \"job_monitor\" \"off\"", "getval \"job_monitor\"", kIsOff}},
    {"network details, for the whole question only",
     "\x12"
     "CE\x12"
     "CEX\x12"
     "CER",
     {"print data, 7 bytes", "network details wanted", "<-000000000000000000FFFFFF00000000"}},
    {"status is a report for every host",
     kStatus + kGsHOn + kStatus + V1("do \"print_feedform\""),
     {"getval \"reprint_status\"", kStatusZero, kGsHMonitoringOn, "getval \"reprint_status\"", kStatusZero,
      "do \"print_feedform\", paper fed"}},
    {"task numbers are four digits",
     V1("setval \"process_id\" \"00x7\"") + V1("setval \"process_id\" 0007") + GsH("00-007") + GsH("000007") +
         GsH("0000007"),
     {"setval \"process_id\" \"00x7\" (not four digits), ignored",
      "setval \"process_id\" 0007 (not four digits), ignored", "GS ( H, task number -007 (not four digits), ignored",
      "GS ( H, task number 0007", "GS ( H, 7 bytes (not simulated)"}},
};

TEST(PrinterModel, UnderstandsAndAnswersAndIsInStepAfterwards) {
  for (const auto& row : kExchanges) {
    SCOPED_TRACE(row.name);
    Shop shop;
    const Transcript notes = Send(shop, row.sent + kGetWidth);
    const auto width = shop.model.State().current.print_width;
    Transcript expected = row.expected;
    expected.push_back("getkey key 0x00CC");
    expected.push_back("<-" + Hex({static_cast<std::uint8_t>(width & 0xFF), static_cast<std::uint8_t>(width >> 8)}));
    EXPECT_EQ(notes, expected);
  }
}

TEST(PrinterModel, ConnectionsShareTheSettingsButNotTheirStreams) {
  Shop shop({}, /*hosts=*/2);
  Send(shop, kUnknownKey + SetWidth("\x80\x02") + kSave.substr(0, 12));
  EXPECT_EQ(Send(shop, kGetWidth, 2).back(), "<-8002");
  EXPECT_EQ(Send(shop, kSave.substr(12)).back(), "<-01");
  EXPECT_EQ(shop.model.State().saved.print_width, kDefaultPrintWidth);
  EXPECT_EQ(Send(shop, kSave, 2).back(), "<-00");
  EXPECT_EQ(shop.model.State().saved.print_width, 640);
}

TEST(PrinterModel, TellsWhatAConnectionLeftUnfinished) {
  Shop shop({}, /*hosts=*/2);
  shop.Send(1, kGetWidth.substr(0, 17));
  shop.Send(2, kClear.substr(0, 4));
  EXPECT_EQ(shop.Leave(1), Transcript{"1> unfinished command, 17 bytes"});
  EXPECT_EQ(shop.Leave(2), Transcript{"2> print data, 4 bytes"});
}

TEST(Faults, DelayComesBeforeTheFirstPieceOnly) {
  std::vector<std::pair<int, Bytes>> pieces;
  for (const AnswerPiece& piece : PlanAnswer({false, milliseconds(70), milliseconds(5), {}}, {1, 2, 3})) {
    pieces.emplace_back(static_cast<int>(piece.pause.count()), piece.bytes);
  }
  EXPECT_EQ(pieces, (std::vector<std::pair<int, Bytes>>{{70, {1}}, {5, {2}}, {5, {3}}}));
}

TEST(TraceFormat, WrapsBytesUnderTheFirstRow) {
  EXPECT_EQ(FormatTraceEntry(milliseconds(1234), {1, WireEvent::Direction::kReceived, {Bytes(17, 0xAB), "words"}}),
            "    1.234 #1 -> AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB  words\n"
            "                AB\n");
}

const std::string kQuestion = "getval \"printer_message\"";

TEST(NetworkScan, EachPortHasAQuestionOfItsOwn) {
  const std::tuple<std::string, bool, bool> rows[] = {
      {kQuestion, true, false},
      {V1(kQuestion), false, true},
      {V1(kQuestion) + "\"192.168.1.7\"\r\n", false, true},
      {V1(kQuestion).substr(0, 32), false, false},
      {"x" + kQuestion, false, false},
      {"", false, false},
  };
  for (const auto& [datagram, receipt, label] : rows) {
    EXPECT_EQ(IsScanQuestion(ScanKind::kReceiptPrinters, datagram), receipt) << datagram;
    EXPECT_EQ(IsScanQuestion(ScanKind::kLabelPrinters, datagram), label) << datagram;
  }
}

TEST(NetworkScan, AnswerFitsARecord) {
  NetworkIdentity identity;
  identity.name = identity.state = std::string(32, 'x');
  identity.number = 300;
  identity.address = identity.gateway = {250, 250, 250, 250};
  EXPECT_LE(ScanAnswer(identity).bytes.size(), 255u);
}

}  // namespace
}  // namespace virtual_printer
