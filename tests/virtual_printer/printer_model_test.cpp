#include "virtual_printer/printer_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "test_hosts.h"
#include "virtual_printer/faults.h"
#include "virtual_printer/trace_format.h"

namespace virtual_printer {
namespace {

using std::chrono::milliseconds;

const std::string kPrefix = "\x1B\x1C& V1 ";
const std::string kGetWidth = kPrefix + "getkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x02});
const std::string kSave = kPrefix + "do \"save_param_zone\"\r\n";
const std::string kUnknownKey = kPrefix + "setkey\r\n" + Raw({0x01, 0xCD, 0x00, 0x02, 0x80, 0x02});

std::string SetWidth(unsigned char low, unsigned char high) {
  return kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x02, low, high});
}

// A host of a printer: what the printer understood, in words, and behind "<-" the bytes that it answered.
class Host {
 public:
  explicit Host(PrinterModel& model, int number = 1) : model_(model), number_(number) { model_.Connect(number_); }

  Transcript Send(const std::string& bytes) {
    return Note(model_.Receive(number_, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), Time()));
  }
  Transcript Finish() { return Note(model_.Disconnect(number_, Time())); }
  std::size_t PendingBytes() const { return model_.PendingBytes(number_); }

 private:
  static Transcript Note(const PrinterModel::Events& events) {
    Transcript notes;
    for (const WireEvent& event : events) {
      const bool sent = event.direction == WireEvent::Direction::kSent;
      notes.push_back(sent ? "<-" + Hex(event.message.bytes) : event.message.text);
    }
    return notes;
  }

  PrinterModel& model_;
  const int number_;
};

// Appends; print data in several pieces becomes one note.
void Append(Transcript& notes, const Transcript& more) {
  const std::string data = "print data";
  for (const std::string& note : more) {
    if (note.compare(0, data.size(), data) != 0) {
      notes.push_back(note);
    } else if (notes.empty() || notes.back() != data) {
      notes.push_back(data);
    }
  }
}

struct Exchange {
  const char* name;
  std::string sent;
  Transcript expected;
};

class PrinterModelExchange : public testing::TestWithParam<Exchange> {};

TEST_P(PrinterModelExchange, IsUnderstoodAndAnswered) {
  PrinterModel model({});
  EXPECT_EQ(Host(model).Send(GetParam().sent), GetParam().expected);
}

const std::string kNotAnswered = ", not answered";
const std::string kOn = V1("setval \"job_monitor\" \"on\"");
const std::string kOnWords = "setval \"job_monitor\" \"on\", by V1 reports";
const std::string kAskMonitoring = V1("getval \"job_monitor\"");
// Reports, type 259, of which the last byte counts; and one of type 260, with four bytes of status.
const std::string kDone = "<-1B1C26205631207265706F7274030102000001";
const std::string kIsOff = "<-1B1C26205631207265706F7274030102000000";
const std::string kStatusZero = "<-1B1C26205631207265706F7274040105000000000000";

const Exchange kExchanges[] = {
    {"ReadsTheInitialWidth", kGetWidth, {"getkey key 0x00CC", "<-4002"}},
    {"SetsReadsAndSaves",
     SetWidth(0xCD, 0xAB) + kGetWidth + kSave,
     {"setkey key 0x00CC = 43981", "<-01CC00", "getkey key 0x00CC", "<-CDAB", "do \"save_param_zone\"", "<-00"}},
    {"ValueThatLooksLikeLineEnd",
     SetWidth('\r', '\n') + kGetWidth,
     {"setkey key 0x00CC = 2573", "<-01CC00", "getkey key 0x00CC", "<-0D0A"}},
    {"UnknownKeyFailsTheNextSaveOnly",
     kUnknownKey + kSave + kSave,
     {"setkey key 0x00CD, 2 bytes (unknown key), refused", "do \"save_param_zone\"", "<-01", "do \"save_param_zone\"",
      "<-00"}},
    {"HighByteOfKeyCounts",
     kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x01, 0x02, 0x80, 0x02}),
     {"setkey key 0x01CC, 2 bytes (unknown key), refused"}},
    {"ValueTooLong",
     kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x03, 1, 2, 3}) + kGetWidth,
     {"setkey key 0x00CC, 3 bytes (wrong length), refused", "getkey key 0x00CC", "<-4002"}},
    {"ValueTooShort",
     kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x01, 1}) + kSave,
     {"setkey key 0x00CC, 1 byte (wrong length), refused", "do \"save_param_zone\"", "<-01"}},
    {"RecordMissing",
     kPrefix + "setkey\r\n" + kSave,
     {"setkey without a record, refused", "do \"save_param_zone\"", "<-01"}},
    {"GetUnknownKey",
     kPrefix + "getkey\r\n" + Raw({0x01, 0xCD, 0x00, 0x02}),
     {"getkey key 0x00CD (unknown key)" + kNotAnswered}},
    {"GetWithWrongLength",
     kPrefix + "getkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x04}),
     {"getkey key 0x00CC (wrong length)" + kNotAnswered}},
    {"GetWithoutRecord",
     kPrefix + "getkey\r\n" + kGetWidth,
     {"getkey without a record" + kNotAnswered, "getkey key 0x00CC", "<-4002"}},
    {"OtherVerbsAndActionsAreOnlyShown",
     V1("setval \"tone\" \"on\"") + V1("getval \"tone\"") + V1("do \"reset\x07\xC4\"") + V1("") + GsH("103"),
     {"setval \"tone\" \"on\" (not simulated)", "getval \"tone\" (not simulated)",
      "do \"reset\\x07\\xC4\" (not simulated)", " (not simulated)", "GS ( H, 3 bytes (not simulated)"}},
    {"ReportHasNoLineEnd", kPrefix + "report" + kGetWidth, {"report (not simulated)", "getkey key 0x00CC", "<-4002"}},
    {"PrintDataAroundCommands",
     "Total 9.99\n" + kGetWidth + "\x1E",
     {"print data, 11 bytes", "getkey key 0x00CC", "<-4002", "print data, 1 byte"}},
    {"PrefixBehindItsOwnBeginnings",
     "\x1B\x1B\x1C&\x1B" + kGetWidth,
     {"print data, 5 bytes", "getkey key 0x00CC", "<-4002"}},
    {"LineGivenUpForAnotherCommand",
     kPrefix + "do \"save_pa" + kGetWidth,
     {"unfinished command, 18 bytes", "getkey key 0x00CC", "<-4002"}},
    {"OtherLineEndsDoNotCount",
     kPrefix + "do \"save_param_zone\"\n\r" + kGetWidth,
     {"unfinished command, 29 bytes", "getkey key 0x00CC", "<-4002"}},
    {"LongestLine",
     kPrefix + "x" + std::string(246, 'y') + "\r\n" + kGetWidth,
     {"x" + std::string(246, 'y') + " (not simulated)", "getkey key 0x00CC", "<-4002"}},
    {"OverlongLine",
     kPrefix + "x" + std::string(248, 'y') + "\r\n" + kGetWidth,
     {"command without a line end, 256 bytes", "print data, 2 bytes", "getkey key 0x00CC", "<-4002"}},
    {"OverlongLineThatEndsInsideAPrefix",
     kPrefix + std::string(246, 'y') + kGetWidth,
     {"command without a line end, 253 bytes", "getkey key 0x00CC", "<-4002"}},
    {"CutOffRecordTakesItsLengthOfWhatFollows",
     kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x00}) + kGetWidth + kGetWidth + kGetWidth,
     {"setkey key 0x00CC, 27 bytes (wrong length), refused", "print data, 10 bytes", "getkey key 0x00CC", "<-4002"}},
    {"LineGivenUpForCommandsOfOtherForms",
     kPrefix + "do \"a" + kClear + kPrefix + "do \"b" + GsH("103"),
     {"unfinished command, 12 bytes", "clear tasks, 0 waiting", kDone, "unfinished command, 12 bytes",
      "GS ( H, 3 bytes (not simulated)"}},
    {"AbsurdGsHLengthIsPrintDataAndMayHoldACommand",
     "\x1D(H" + Raw({0x00, 0x01}) + "A\x1D(H" + kGetWidth,
     {"print data, 6 bytes", "print data, 3 bytes", "getkey key 0x00CC", "<-4002"}},
    {"ResetWithoutAnswerLeavesTheNextByteAlone",
     GsH("200") + kGetWidth + GsH("200") + "A",
     {"GS ( H, task numbering reset, no answer wanted", "getkey key 0x00CC", "<-4002",
      "GS ( H, task numbering reset, no answer wanted", "print data, 1 byte"}},
    {"ResetTakesOneLineFeedOnly",
     GsH("200") + "\n\n",
     {"GS ( H, task numbering reset", "<-372400", "print data, 1 byte"}},
    {"ResetAndClearAnswerInTheMannerOfV1",
     kOn + GsH("200") + "\n" + kClearRealTime,
     {kOnWords, "GS ( H, task numbering reset", kDone, "clear tasks, 0 waiting", kDone}},
    {"ResetAndClearAnswerInTheMannerOfGsH",
     GsH("102") + GsH("200") + "\n" + kClear + kClearRealTime,
     {"GS ( H, monitoring on, by 37 replies", "GS ( H, task numbering reset", "<-372400", "clear tasks, 0 waiting",
      "<-372500", "clear tasks, 0 waiting", "<-372500"}},
    {"ClearAnswersInItsOwnMannerWithoutMonitoring",
     kClear + kClearRealTime,
     {"clear tasks, 0 waiting", kDone, "clear tasks, 0 waiting", "<-372500"}},
    {"MonitoringIsTold",
     kAskMonitoring + kOn + kAskMonitoring + V1("setval \"job_monitor\" \"off\"") + kAskMonitoring,
     {"getval \"job_monitor\"", kIsOff, kOnWords, "getval \"job_monitor\"", kDone, "setval \"job_monitor\" \"off\"",
      "getval \"job_monitor\"", kIsOff}},
    {"OtherMonitoringValuesChangeNothing",
     kOn + V1("setval \"job_monitor\" \"Off\"") + V1("setval \"job_monitor\" \"\"") + kAskMonitoring,
     {kOnWords, "setval \"job_monitor\" \"Off\" (not simulated)", "setval \"job_monitor\" \"\" (not simulated)",
      "getval \"job_monitor\"", kDone}},
    {"StatusIsAReportForEveryHost",
     V1("getval \"reprint_status\"") + GsH("102") + V1("getval \"reprint_status\""),
     {"getval \"reprint_status\"", kStatusZero, "GS ( H, monitoring on, by 37 replies", "getval \"reprint_status\"",
      kStatusZero}},
    {"PaperFeedIsNotAnswered", V1("do \"print_feedform\""), {"do \"print_feedform\", paper fed"}},
    {"TaskNumbersAreFourDigits",
     V1("setval \"process_id\" \"7\"") + V1("setval \"process_id\" \"00x7\"") + V1("setval \"process_id\" 0007") +
         GsH("00-007") + GsH("000007") + GsH("0000007"),
     {"setval \"process_id\" \"7\" (not four digits), ignored",
      "setval \"process_id\" \"00x7\" (not four digits), ignored",
      "setval \"process_id\" 0007 (not four digits), ignored", "GS ( H, task number -007 (not four digits), ignored",
      "GS ( H, task number 0007", "GS ( H, 7 bytes (not simulated)"}},
};

INSTANTIATE_TEST_SUITE_P(Table, PrinterModelExchange, testing::ValuesIn(kExchanges),
                         [](const auto& row) { return std::string(row.param.name); });

// Together they hold each command, so that each is split at each place; the second one holds beginnings of commands.
const std::string kSplitStreams[] = {
    kUnknownKey + SetWidth(0x80, 0x02) + kSave + kPrefix + "do \"cut" + kGetWidth,
    "\x1B\x1C&c\x10\x14\x08\x01\x1D(\x1D(H\x1B\x1C" + kGetWidth,
    kOn + kAskMonitoring + V1("getval \"reprint_status\"") + V1("setval \"process_id\" \"0007\"") +
        V1("do \"print_feedform\"") + kClear + kGetWidth,
    GsH("102") + GsH("000007") + GsH("200") + "\n" + GsH("200") + kClearRealTime + GsH("") + GsH("100") + kGetWidth,
};

TEST(PrinterModel, UnderstandsACommandHoweverItIsSplit) {
  for (const std::string& stream : kSplitStreams) {
    Transcript whole;
    PrinterModel whole_model({});
    Append(whole, Host(whole_model).Send(stream));
    ASSERT_EQ(whole.back(), stream == kSplitStreams[0] ? "<-8002" : "<-4002");

    for (std::size_t split = 1; split < stream.size(); ++split) {
      PrinterModel model({});
      Host host(model);
      Transcript pieces;
      Append(pieces, host.Send(stream.substr(0, split)));
      Append(pieces, host.Send(stream.substr(split)));
      EXPECT_EQ(pieces, whole) << "split at " << split;
    }

    PrinterModel model({});
    Host host(model);
    Transcript pieces;
    for (const char byte : stream) {
      Append(pieces, host.Send(std::string(1, byte)));
    }
    EXPECT_EQ(pieces, whole) << "byte by byte";
  }
}

TEST(PrinterModel, HoldsBackLittleOfEndlessInput) {
  const std::string inputs[] = {
      std::string(100000, 'A'),
      std::string(100000, '\x1B'),
      kPrefix + std::string(100000, 'A'),
      kPrefix + "setkey\r\n" + Raw({0x01, 0x00, 0x00, 0xFF}) + std::string(100000, '\x1B'),
      "\x1D(H" + Raw({0xFF, 0x00}) + std::string(100000, 'A'),
      "\x1D(H" + std::string(100000, '\xFF'),
  };
  for (const std::string& input : inputs) {
    PrinterModel model({});
    Host host(model);
    for (std::size_t offset = 0; offset < input.size(); offset += 100) {
      host.Send(input.substr(offset, 100));
      ASSERT_LE(host.PendingBytes(), CommandParser::kMaxPending);
    }
    EXPECT_EQ(host.Send(kGetWidth).back(), "<-4002");
  }
}

TEST(PrinterModel, SavesOnlyWhenAskedAndOnlyWhenNothingWasRefused) {
  PrinterModel model({});
  const PrinterState& state = model.State();
  Host host(model);
  host.Send(SetWidth(0x80, 0x02));
  EXPECT_EQ(state.current.print_width, 640);
  EXPECT_EQ(state.saved.print_width, kDefaultPrintWidth);
  host.Send(kUnknownKey + kSave);
  EXPECT_EQ(state.saved.print_width, kDefaultPrintWidth);
  host.Send(kSave);
  EXPECT_EQ(state.saved.print_width, 640);
}

TEST(PrinterModel, ConnectionsShareTheSettingsButNotTheirStreams) {
  PrinterModel model({});
  Host first(model, 1);
  Host second(model, 2);
  first.Send(kUnknownKey + SetWidth(0x80, 0x02) + kSave.substr(0, 12));
  EXPECT_EQ(second.Send(kGetWidth + kSave),
            (Transcript{"getkey key 0x00CC", "<-8002", "do \"save_param_zone\"", "<-00"}));
  EXPECT_EQ(first.Send(kSave.substr(12)), (Transcript{"do \"save_param_zone\"", "<-01"}));
}

TEST(PrinterModel, CountsPrintDataAlone) {
  PrinterModel model({});
  Host host(model);
  host.Send("12345" + kGetWidth + "678\x1B");
  EXPECT_EQ(model.State().print_data_bytes, 8u);
  EXPECT_EQ(host.Finish(), (Transcript{"print data, 1 byte"}));
  EXPECT_EQ(model.State().print_data_bytes, 9u);
}

TEST(PrinterModel, TellsWhatAConnectionLeftUnfinished) {
  const std::pair<std::string, Transcript> rows[] = {
      {"", {}},
      {kGetWidth.substr(0, 17), {"unfinished command, 17 bytes"}},
      {GsH("102").substr(0, 7), {"unfinished command, 7 bytes"}},
      {kClear.substr(0, 4), {"print data, 4 bytes"}},
      {GsH("200"), {"GS ( H, task numbering reset, no answer wanted"}},
  };
  for (const auto& [sent, expected] : rows) {
    PrinterModel model({});
    Host host(model);
    EXPECT_EQ(host.Send(sent), Transcript{});
    EXPECT_EQ(host.Finish(), expected);
  }
}

struct Plan {
  const char* name;
  Faults faults;
  std::vector<std::pair<int, Bytes>> expected;  // Pause in milliseconds, bytes.
};

TEST(Faults, DecideHowAnAnswerIsSent) {
  const Plan plans[] = {
      {"none", {}, {{0, {1, 2, 3}}}},
      {"delay", {false, milliseconds(70), {}, {}}, {{70, {1, 2, 3}}}},
      {"split", {false, milliseconds(0), milliseconds(5), {}}, {{0, {1}}, {5, {2}}, {5, {3}}}},
      {"delay and split", {false, milliseconds(70), milliseconds(5), {}}, {{70, {1}}, {5, {2}}, {5, {3}}}},
      {"silent wins", {true, milliseconds(70), milliseconds(5), {}}, {}},
  };
  for (const Plan& plan : plans) {
    std::vector<std::pair<int, Bytes>> pieces;
    for (const AnswerPiece& piece : PlanAnswer(plan.faults, {1, 2, 3})) {
      pieces.emplace_back(static_cast<int>(piece.pause.count()), piece.bytes);
    }
    EXPECT_EQ(pieces, plan.expected) << plan.name;
  }
}

TEST(Faults, LimitEndsWithExactlyItsBytes) {
  Faults faults;
  faults.drop_after = 21;
  ReceiveLimit limit(faults);
  EXPECT_EQ(limit.Admit(20), 20u);
  EXPECT_FALSE(limit.Reached());
  EXPECT_EQ(limit.Admit(5), 1u);
  EXPECT_TRUE(limit.Reached());
  EXPECT_EQ(limit.Admit(5), 0u);
}

TEST(Faults, WithoutALimitEverythingCounts) {
  ReceiveLimit limit(Faults{});
  EXPECT_EQ(limit.Admit(1000000), 1000000u);
  EXPECT_FALSE(limit.Reached());
}

TEST(Faults, GarbageBeginsNoFrame) {
  const Bytes garbage = Garbage(1000);
  EXPECT_EQ(garbage.size(), 1000u);
  EXPECT_EQ(std::count(garbage.begin(), garbage.end(), 0x1B) + std::count(garbage.begin(), garbage.end(), 0x37), 0);
}

TEST(TraceFormat, WrapsBytesUnderTheFirstRow) {
  const Bytes bytes(17, 0xAB);
  EXPECT_EQ(FormatTraceEntry(milliseconds(1234), 1, "->", bytes, "words"),
            "    1.234 #1 -> AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB AB  words\n"
            "                AB\n");
  EXPECT_EQ(FormatTraceEntry(milliseconds(5), 12, "<-", {0x00}, "words"),
            "    0.005 #12 <- 00                                               words\n");
}

}  // namespace
}  // namespace virtual_printer
