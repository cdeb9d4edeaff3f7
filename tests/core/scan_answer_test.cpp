// Scan answers: lines become fields, and ready printers are listed.
#include "discovery/scan_answer.h"

#include <cstring>

#include "core/core_test.h"

namespace vexo {
namespace {

std::string ListOf(const std::string& answer) {
  ScanList list;
  list.Add(answer);
  return list.Text();
}

TEST(ScanAnswerTest, AnswersOfReadyPrintersAreListed) {
  const std::string line(300, 'x');
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"one line", "ready", ""},
      {"more than the word", "10.0.0.1\r\nready \r\n", ""},
      {"two lines", "10.0.0.1\r\nready", "10.0.0.1;ready;;;;;;;;;;;;;;|"},
      {"empty lines", "\r\nready\r\n\r\nb\r\n\r\n", ";ready;;b;;;;;;;;;;;;|"},
      {"halves of line ends", "a\rb\r\nready\r\nc\n\r\r\nd\r", "a\rb;ready;c\n\r;d\r;;;;;;;;;;;;|"},
      {"all fields, and more",
       "0\r\nready\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\n10\r\n11\r\n12\r\n13\r\n14\r\n15\r\n16\r\n17",
       "0;ready;2;3;4;5;6;7;8;9;10;11;12;13;14;15|"},
      {"too long for a record", "a\r\nready\r\n" + line, "a;ready;" + line.substr(0, 247) + '|'},
      {"just short enough", "a\r\nready\r\n" + line.substr(0, 234),
       "a;ready;" + line.substr(0, 234) + ";;;;;;;;;;;;;|"},
  };
  for (const auto& [scenario, answer, list] : cases) {
    SCOPED_TRACE(scenario);
    EXPECT_EQ(ListOf(answer), list);
  }
}

TEST(ScanAnswerTest, DescriptorHasAtMost63Characters) {
  EXPECT_EQ(ScanRecord("10.0.0.1\r\nready").DescriptorOfPrinter(), "NET,10.0.0.1,9100");
  EXPECT_EQ(ScanRecord("").DescriptorOfPrinter(), "NET,,9100");
  EXPECT_EQ(ScanRecord(std::string(2000, 'x')).DescriptorOfPrinter(), "NET," + std::string(59, 'x'));
}

TEST(ScanAnswerTest, OnlyDottedAddressesAreAddresses) {
  EXPECT_EQ(ScanRecord("192.168.1.50\r\nready").Address(), 0xC0A80132U);
  EXPECT_EQ(ScanRecord("0.0.255.0").Address(), 0xFF00U);
  for (const char* const text : {"", "1.2.3", "1.2.3.", "1.2.3.4.", "1.2.3.4.5", ".1.2.3.4", "1..2.3", "1.2.3.256",
                                 "1.2.3.004", "1.2.3.1000", "1.2.3.4 ", " 1.2.3.4", "1.2.3.-4", "0x1.2.3.4", "16909060",
                                 "printer.example", "1.2.3.4,5", "1.2.3.4?port=1"}) {
    EXPECT_EQ(ScanRecord(text).Address(), std::nullopt) << text;
  }
}

TEST(ScanAnswerTest, AddressesOfAShortReplyAreLeftOut) {
  const std::string reply = std::string("........\x01\x02\xa8\xc0\x00\xff\xff\xff\x01\x02\x03\x04", 20);
  const std::pair<size_t, const char*> rows[] = {
      {20, "192.168.2.1;255.255.255.0;c"}, {16, "192.168.2.1;255.255.255.0;c"}, {15, "192.168.2.1;b;c"}, {11, "a;b;c"}};
  for (const auto& [length, addresses] : rows) {
    ScanRecord record("0\r\nready\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\na\r\nb\r\nc");
    record.TakeReply(Bytes(reply.begin(), reply.begin() + static_cast<ptrdiff_t>(length)));
    std::string text;
    record.AppendTo(&text);
    EXPECT_EQ(text, std::string("0;ready;2;3;4;5;6;7;8;9;") + addresses + ";;;");
  }
}

TEST(ScanAnswerTest, TextOfExactlyTheSizeIsTerminatedBehindTheBuffer) {
  const struct {
    int32_t size;
    int32_t result;
    const char* buffer;
  } cases[] = {
      {-1, VEXO_ERROR_BUFFER_TOO_SMALL, "#######"},
      {0, VEXO_ERROR_BUFFER_TOO_SMALL, "#######"},
      {4, VEXO_ERROR_BUFFER_TOO_SMALL, "#######"},
      {5, VEXO_OK, "a;b;|\0#"},
      {6, VEXO_OK, "a;b;|\0#"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.size);
    char buffer[8] = "#######";
    EXPECT_EQ(CopyScanText("a;b;|", buffer, test.size), test.result);
    EXPECT_EQ(memcmp(buffer, test.buffer, sizeof(buffer)), 0);
  }
}

}  // namespace
}  // namespace vexo
