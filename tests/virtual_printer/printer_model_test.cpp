#include "virtual_printer/printer_model.h"

#include <gtest/gtest.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <vector>

#include "virtual_printer/faults.h"
#include "virtual_printer/trace_format.h"

namespace virtual_printer {
namespace {

using std::chrono::milliseconds;
using Transcript = std::vector<std::string>;

std::string Raw(std::initializer_list<unsigned char> bytes) { return {bytes.begin(), bytes.end()}; }

const std::string kPrefix = "\x1B\x1C& V1 ";
const std::string kGetWidth = kPrefix + "getkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x02});
const std::string kSave = kPrefix + "do \"save_param_zone\"\r\n";
const std::string kUnknownKey = kPrefix + "setkey\r\n" + Raw({0x01, 0xCD, 0x00, 0x02, 0x80, 0x02});

std::string SetWidth(unsigned char low, unsigned char high) {
  return kPrefix + "setkey\r\n" + Raw({0x01, 0xCC, 0x00, 0x02, low, high});
}

std::string Hex(const Bytes& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const auto byte : bytes) {
    hex.append({kDigits[byte >> 4], kDigits[byte & 15]});
  }
  return hex;
}

// A printer with one connection, and what its host would note down.
class Host {
 public:
  explicit Host(PrinterState& state) : model_(state) {}

  // What was received, in words, and behind "<-" the bytes that were answered.
  Transcript Send(const std::string& bytes) {
    return Note(model_.Receive(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
  }
  Transcript Finish() { return Note(model_.Finish()); }
  std::size_t PendingBytes() const { return model_.PendingBytes(); }

 private:
  static Transcript Note(const std::vector<WireEvent>& events) {
    Transcript notes;
    for (const WireEvent& event : events) {
      notes.push_back(event.direction == WireEvent::Direction::kSent ? "<-" + Hex(event.bytes) : event.text);
    }
    return notes;
  }

  PrinterModel model_;
};

struct Exchange {
  const char* name;
  std::string sent;
  Transcript expected;
};

class PrinterModelExchange : public testing::TestWithParam<Exchange> {};

TEST_P(PrinterModelExchange, IsUnderstoodAndAnswered) {
  PrinterState state;
  EXPECT_EQ(Host(state).Send(GetParam().sent), GetParam().expected);
}

const std::string kNotAnswered = ", not answered";

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
     kPrefix + "setval \"job_monitor\" \"on\"\r\n" + kPrefix + "do \"reset\x07\xC4\"\r\n" + kPrefix + "\r\n",
     {"setval \"job_monitor\" \"on\" (not simulated)", "do \"reset\\x07\\xC4\" (not simulated)", " (not simulated)"}},
    {"ReportHasNoLineEnd", kPrefix + "report" + kGetWidth, {"report (not simulated)", "getkey key 0x00CC", "<-4002"}},
    {"PrintDataAroundCommands",
     "Total 9.99\n" + kGetWidth + "\x1D",
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
};

INSTANTIATE_TEST_SUITE_P(Table, PrinterModelExchange, testing::ValuesIn(kExchanges),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PrinterModel, UnderstandsACommandHoweverItIsSplit) {
  const std::string stream = kUnknownKey + SetWidth(0x80, 0x02) + kSave + kPrefix + "do \"cut" + kGetWidth;
  PrinterState whole_state;
  const Transcript whole = Host(whole_state).Send(stream);
  ASSERT_EQ(whole.back(), "<-8002");

  for (std::size_t split = 1; split < stream.size(); ++split) {
    PrinterState state;
    Host host(state);
    Transcript pieces = host.Send(stream.substr(0, split));
    for (const std::string& note : host.Send(stream.substr(split))) {
      pieces.push_back(note);
    }
    EXPECT_EQ(pieces, whole) << "split at " << split;
  }

  PrinterState state;
  Host host(state);
  Transcript pieces;
  for (const char byte : stream) {
    for (const std::string& note : host.Send(std::string(1, byte))) {
      pieces.push_back(note);
    }
  }
  EXPECT_EQ(pieces, whole) << "byte by byte";
}

TEST(PrinterModel, HoldsBackLittleOfEndlessInput) {
  const std::string inputs[] = {
      std::string(100000, 'A'),
      std::string(100000, '\x1B'),
      kPrefix + std::string(100000, 'A'),
      kPrefix + "setkey\r\n" + Raw({0x01, 0x00, 0x00, 0xFF}) + std::string(100000, '\x1B'),
  };
  for (const std::string& input : inputs) {
    PrinterState state;
    Host host(state);
    for (std::size_t offset = 0; offset < input.size(); offset += 100) {
      host.Send(input.substr(offset, 100));
      ASSERT_LE(host.PendingBytes(), CommandParser::kMaxPending);
    }
    EXPECT_EQ(host.Send(kGetWidth).back(), "<-4002");
  }
}

TEST(PrinterModel, SavesOnlyWhenAskedAndOnlyWhenNothingWasRefused) {
  PrinterState state;
  Host host(state);
  host.Send(SetWidth(0x80, 0x02));
  EXPECT_EQ(state.current.print_width, 640);
  EXPECT_EQ(state.saved.print_width, kDefaultPrintWidth);
  host.Send(kUnknownKey + kSave);
  EXPECT_EQ(state.saved.print_width, kDefaultPrintWidth);
  host.Send(kSave);
  EXPECT_EQ(state.saved.print_width, 640);
}

TEST(PrinterModel, ConnectionsShareTheSettingsButNotTheirStreams) {
  PrinterState state;
  Host first(state);
  Host second(state);
  first.Send(kUnknownKey + SetWidth(0x80, 0x02) + kSave.substr(0, 12));
  EXPECT_EQ(second.Send(kGetWidth + kSave),
            (Transcript{"getkey key 0x00CC", "<-8002", "do \"save_param_zone\"", "<-00"}));
  EXPECT_EQ(first.Send(kSave.substr(12)), (Transcript{"do \"save_param_zone\"", "<-01"}));
}

TEST(PrinterModel, CountsPrintDataAlone) {
  PrinterState state;
  Host host(state);
  host.Send("12345" + kGetWidth + "678\x1B");
  EXPECT_EQ(state.print_data_bytes, 8u);
  EXPECT_EQ(host.Finish(), (Transcript{"print data, 1 byte"}));
  EXPECT_EQ(state.print_data_bytes, 9u);
}

TEST(PrinterModel, ReportsWhatAConnectionLeftUnfinished) {
  PrinterState state;
  Host host(state);
  host.Send(kGetWidth.substr(0, 17));
  EXPECT_EQ(host.Finish(), (Transcript{"unfinished command, 17 bytes"}));
  EXPECT_EQ(host.Finish(), Transcript{});
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
