#include "protocol/reply_analysis.h"

#include <stdexcept>

#include "core/core_test.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;

const std::string kHeader = "\x1b\x1c& V2";

// A reply whose header announces `length` bytes of payload.
std::string Reply(const std::string& payload, size_t length, const std::string& header = kHeader) {
  return header + "abc" + LittleEndian(static_cast<uint32_t>(length), 2) + "fghijkl" + payload;
}
std::string Reply(const std::string& payload) { return Reply(payload, payload.size()); }

const std::string kGetVal = "\x1b\x1c& V2 getval \"name\"\r\n";
const std::string kGetKey = "getkey\r\n";
const std::string kStatus = "\x00\x01\x02\x03"s;

TEST(ReplyAnalysis, SplitsAReply) {
  const std::string raw = Reply(kGetVal + kStatus + "a%20b+c\r\nd");
  CAnalysisCmdBase reply(raw);
  EXPECT_TRUE(reply.valid());
  EXPECT_TRUE(reply.status());
  EXPECT_EQ(kHeader, reply.header());
  EXPECT_EQ(raw.substr(6, 12), reply.fixed_part());
  EXPECT_EQ(kGetVal, reply.command_line());
  EXPECT_EQ(kStatus, reply.status_bytes());
  EXPECT_EQ("a%20b+c\r\nd", reply.value());
  EXPECT_EQ("a%20b+c\r\nd", reply.result());
  EXPECT_EQ(raw, reply.raw_reply());
}

TEST(ReplyAnalysis, OffsetOfTheValueDependsOnTheCommand) {
  const std::tuple<std::string, std::string, std::string, bool> rows[] = {
      {kGetVal + "\x01\x00\x01\x01"s + "v", kGetVal, "v", false},
      {kGetKey + kStatus + "\x01\xcc\x00\x02"s + "v", kGetKey, "v", true},
      {kGetKey + kStatus + "1234", kGetKey, "", true},
      {"\r\n" + kStatus + "v", "\r\n", "v", true},
      {"getkey\n" + kStatus, "", "ey\n" + kStatus, true},
  };
  for (const auto& [payload, line, value, status] : rows) {
    const CAnalysisCmdBase reply(Reply(payload));
    EXPECT_TRUE(reply.valid());
    EXPECT_EQ(line, reply.command_line());
    EXPECT_EQ(value, reply.result());
    EXPECT_EQ(status, reply.status()) << testing::PrintToString(payload);
  }
}

TEST(ReplyAnalysis, InvalidFramesAreDetected) {
  const std::string payload = kGetVal + kStatus + "v";
  const struct {
    const char* scenario;
    std::string raw;
    bool valid;
    int32_t analysed;
    std::string value;
  } rows[] = {
      {"17 bytes", Reply(payload).substr(0, 17), false, -30, ""},
      {"no payload, none announced", Reply(""), true, -30, ""},
      {"wrong header", Reply(payload, payload.size(), "\x1b\x1c& V1"), false, 0, "v"},
      {"more than announced", Reply(payload, 1), true, 0, "v"},
      {"one byte is missing", Reply(payload, payload.size() + 1), false, -30, ""},
      {"all of 0x7fff", Reply(payload + std::string(0x7FFF - payload.size(), ' '), 0x7FFF), true, 0,
       "v" + std::string(0x7FFF - payload.size(), ' ')},
      {"negative high byte", Reply(std::string(0x8000, ' ')), false, -30, ""},
      {"status cut off", Reply(kGetVal + "abc"), true, -30, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.scenario);
    CAnalysisCmdBase reply(row.raw);
    EXPECT_EQ(row.valid, reply.valid());
    EXPECT_EQ(row.value, reply.result());
    EXPECT_EQ(row.analysed, reply.Analyse());
    EXPECT_EQ(row.raw, reply.raw_reply());
    EXPECT_TRUE(reply.status());
  }
  EXPECT_EQ("", CAnalysisCmdBase(Reply(payload).substr(0, 17)).header());
}

TEST(ReplyAnalysis, KeyAnswerWithoutItsRecordThrows) {
  EXPECT_THROW(CAnalysisCmdBase(Reply(kGetKey + kStatus)), std::out_of_range);
  EXPECT_THROW(CAnalysisCmdBase(Reply(kGetKey + kStatus + "rrr")), std::out_of_range);
}

TEST(UrlDecode, ParsesEscapesAsTheStandardLibraryParsesNumbers) {
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},           {"a%20b+c", "a b c"}, {"%41%4a%4A", "AJJ"}, {"%4z", "\x04"}, {"%zzz", "\0z"s},
      {"%%41", "\0001"s}, {"% 7", "\x07"},      {"%+7+", "\x07 "},    {"%-1", "\xff"}, {"%0x", "\0"s}};
  for (const auto& [text, decoded] : rows) {
    EXPECT_EQ(decoded, UrlDecode(text, 0)) << text;
  }
  for (const char* const text : {"%", "abc%4", "%41%"}) {
    EXPECT_THROW(UrlDecode(text, 0), std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace vexo::test
