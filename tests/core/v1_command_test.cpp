// Encoding of V1 commands and the patterns of replies.
#include "protocol/v1_command.h"

#include <regex>

#include "core/core_test.h"
#include "protocol/hex_text.h"
#include "protocol/reply_patterns.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;

TEST(HexText, SeparatorsAreRemovedBeforePairsAreParsed) {
  const struct {
    std::string text;
    Bytes bytes;
  } rows[] = {
      {"1b 1c 26 20 56 31 20 67 65 74 6B 65 79 0D 0A", BytesOf("\x1b\x1c& V1 getkey\r\n")},
      {"0x1B,0x1c;7|a", {0x1B, 0x1C, 0x7A}},
      {"123", {0x12}},
      {"f", {}},
      {"fFaA09", {0xFF, 0xAA, 0x09}},
      {"0X1B", {0x21, 0x1B}},  // Only a lower-case x is a prefix.
      {"zz/0", {0x53, 0xF0}},
  };
  for (const auto& row : rows) {
    std::string text = row.text;
    EXPECT_EQ(row.bytes, HexTextToBytes(std::move(text))) << row.text;
    EXPECT_EQ("", text);  // NOLINT(bugprone-use-after-move): the text is used up, as promised.
  }
}

TEST(V1Command, FramesAreEncodedExactly) {
  EXPECT_EQ(BytesOf("\x1b\x1c& V1 setkey\r\n\x01\x34\x12\x02\x80\x02"s), BuildSetKeyCommand(0x34, 0x12, {0x80, 0x02}));
  EXPECT_EQ(19U + 258U, BuildSetKeyCommand(1, 2, Bytes(258)).size()) << "data is sent completely";
  EXPECT_EQ(2, BuildSetKeyCommand(1, 2, Bytes(258))[18]) << "the length is cut to one byte";
  EXPECT_EQ(BytesOf("\x1b\x1c& V1 setval \"\x00\xFF\" \"a\"b\"\r\n"s), BuildSetValCommand("\x00\xFF"s, "a\"b"));
  EXPECT_EQ(BuildDoCommand("save_param_zone"), BytesOf(kSaveParamZoneCommand));
  EXPECT_EQ(BytesOf("\x1b\x1c& V1 report"), ReportCommand());
}

TEST(ReplyPatterns, CaptureTheFields) {
  const std::string report = "\x1b\x1c& V1 report\r\n\0\xFFmore"s;
  std::smatch match;
  ASSERT_TRUE(std::regex_search(report, match, StatusReportPattern()));
  EXPECT_EQ("\r\n", match[1]);
  EXPECT_EQ("\0\xFF"s, match[2]);
  EXPECT_FALSE(std::regex_search("x" + report, StatusReportPattern()));
  const std::string start = "\x1b\x1c& V1 getval ";
  const std::string answer = start + "\"key\" \"va\r\n\xFF lue\"\r\n";
  ASSERT_TRUE(std::regex_search(answer, match, GetValAnswerPattern()));
  EXPECT_EQ("key", match[1]);
  EXPECT_EQ("va\r\n\xFF lue", match[2]);
  for (const char* const rest : {"\"\" \"v\"", "\"k\" \"\"", "\"k\"\"v\"", "\"k\" \"v", "k v"}) {
    EXPECT_FALSE(std::regex_search(start + rest, GetValAnswerPattern())) << rest;
  }
}

}  // namespace
}  // namespace vexo::test
