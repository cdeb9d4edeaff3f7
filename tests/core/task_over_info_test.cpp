// GetPrinterTaskOverInfo: texts that the printer sends about finished tasks.
#include "core/core_test.h"
#include "monitor/last_error.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Step = ScriptedPort::Step;

std::string Reply(const std::string& value) {
  const std::string payload = "getval \"task\"\r\n" + "\0\1\0\0"s + value;
  return "\x1b\x1c& V2abc" + LittleEndian(static_cast<uint32_t>(payload.size()), 2) + "fghijkl" + payload;
}

class TaskOverInfo : public ::testing::Test {
 protected:
  TaskOverInfo() {
    SetClock(0);
    StoreLastErrorCode(4711);
  }
  ~TaskOverInfo() override { EXPECT_EQ(4711, GetLastErrorCode()); }

  // The buffer of `size` bytes, with '.' for zeros and '#' for bytes not written, or the error code.
  std::string Listen(const std::vector<Step>& steps, int32_t time_ms = 100, uint32_t size = 16) {
    for (const Step& step : steps) {
      port_.OnRead(step);
    }
    std::string text(24, '#');
    uint32_t length = 4711;
    const int32_t result = GetPrinterTaskOverInfo(&handle_, time_ms, text.data(), size, &length);
    if (result != 0) {
      EXPECT_EQ(std::string(24, '#'), text);
      EXPECT_EQ(4711U, length);
      return std::to_string(result);
    }
    if (length == 4711) {
      return "untouched";
    }
    EXPECT_EQ(length, std::min(text.find('\0'), text.find('#')));
    for (char& c : text) {
      c = c == '\0' ? '.' : c;
    }
    return text;
  }
  std::string ListenTo(const std::string& bytes, uint32_t size = 16) { return Listen({{0, BytesOf(bytes)}}, 0, size); }

  ScriptedPort port_;
  VexoPrinterHandle handle_ = OpenHandle(&port_);
};

TEST_F(TaskOverInfo, ListensUntilTheTimeLimit) {
  for (const auto& [time_ms, passes] :
       {std::pair(-5, 1), std::pair(0, 1), std::pair(19, 1), std::pair(20, 2), std::pair(100, 6)}) {
    SetClock(0);
    const size_t before = port_.Operations().size();
    EXPECT_EQ("-332", Listen({}, time_ms));
    EXPECT_EQ(std::vector<uint32_t>(static_cast<size_t>(passes), 20), RecordedSleeps()) << time_ms;
    EXPECT_EQ(before + static_cast<size_t>(passes), port_.Operations().size());
    EXPECT_EQ("Read(0, 256)", port_.Operations().back());
  }
}

TEST_F(TaskOverInfo, ConcatenatesTheTextsOfAllReplies) {
  const std::string two = Reply("a%7Cb") + Reply("c+d");
  EXPECT_EQ("a|b|c d.........########", ListenTo(two));
  const std::vector<Step> pieces = {{-332, BytesOf(two.substr(0, 9))}, {}, {-332, BytesOf(two.substr(9))}};
  EXPECT_EQ("a|b|c d.........########", Listen(pieces));
  EXPECT_EQ("x...............########", ListenTo("noise\x1b\x1c" + Reply("") + Reply("x") + "\x1b\x1c& V2"));
  EXPECT_EQ("................########", ListenTo("noise alone"));
  // Every frame start begins a reply, even inside another one. Bytes before the first start count as one, too.
  EXPECT_EQ("x...............########", ListenTo(Reply("a\x1b\x1c_") + Reply("x")));
  EXPECT_EQ("x|y.............########", ListenTo(Reply("x").substr(2) + Reply("y")));
}

TEST_F(TaskOverInfo, TextNeedsASufficientBufferAndCompleteEscapes) {
  EXPECT_EQ("abcd####################", ListenTo(Reply("abcd"), 4));
  EXPECT_EQ("-2", ListenTo(Reply("abcd"), 3));
  EXPECT_EQ(std::string(24, '#'), ListenTo("noise", 0));
  EXPECT_EQ("-1", ListenTo(Reply("a%2")));
  // Escapes are decoded after concatenation.
  EXPECT_EQ("a\x04x.............########", ListenTo(Reply("a%4") + Reply("x")));
  const std::string packet = std::string(256 - Reply("x").size(), '#') + Reply("x");
  EXPECT_EQ("x...............########", Listen({{0, BytesOf(packet), 300}}, 0))
      << "the packet is longer than the buffer";
}

TEST_F(TaskOverInfo, SilenceGivesTheResultOfTheLastPass) {
  EXPECT_EQ("5", Listen({{-332}, {-309}, {5}}, 59));
  EXPECT_EQ("untouched", Listen({{5}, {0}}, 39));
  EXPECT_EQ("x...............########", Listen({{5}, {-332, BytesOf(Reply("x"))}, {-331}}, 59));
  SetClock(0);
  handle_.portOpen = 0;
  EXPECT_EQ("-309", Listen({}));
  handle_.magic = 1;
  EXPECT_EQ("-6", Listen({}));
  EXPECT_EQ(6U + 6U, RecordedSleeps().size()) << "a bad handle does not end the listening";
}

TEST_F(TaskOverInfo, NullArgumentsAreRefused) {
  char text[8];
  uint32_t length = 0;
  EXPECT_EQ(-6, GetPrinterTaskOverInfo(nullptr, 100, nullptr, 8, nullptr));
  EXPECT_EQ(-7002, GetPrinterTaskOverInfo(&handle_, 100, nullptr, 8, &length));
  EXPECT_EQ(-7002, GetPrinterTaskOverInfo(&handle_, 100, text, 8, nullptr));
  EXPECT_EQ(0U, port_.Operations().size());
}

}  // namespace
}  // namespace vexo::test
