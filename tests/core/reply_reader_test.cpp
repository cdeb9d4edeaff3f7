#include "protocol/reply_reader.h"

#include "core/core_test.h"

namespace vexo::test {
namespace {

using Sleeps = std::vector<uint32_t>;
using Step = ScriptedPort::Step;

struct Reply {
  std::string bytes;
  std::vector<uint32_t> sleeps;
  size_t receives = 0;
};

class ReplyReader : public ::testing::Test {
 protected:
  // Reads into bytes 2 to 9 of a buffer of 12. The printer sends `steps`, then nothing.
  Reply Read(const std::vector<Step>& steps, int32_t tries, int64_t pause_ms) {
    ScriptedPort port;
    for (const Step& step : steps) {
      port.OnRead(step);
    }
    handle_ = OpenHandle(&port);
    SetClock(0);
    std::string buffer(12, '#');
    uint32_t stored = 99;
    auto* const bytes = reinterpret_cast<uint8_t*>(buffer.data());
    EXPECT_EQ(0, ReadReply(&handle_, bytes, 2, 10, &stored, tries, pause_ms));
    EXPECT_EQ("##", buffer.substr(0, 2)) << "written before the range";
    EXPECT_EQ("##", buffer.substr(10)) << "written behind the range";
    EXPECT_EQ(std::vector<std::string>(port.Operations().size(), "ReadAvailable(0, 8)"), port.Operations());
    EXPECT_LE(stored, 8U);
    return {buffer.substr(2, stored), RecordedSleeps(), port.Operations().size()};
  }

  VexoPrinterHandle handle_ = {};
};

const Step kSilence = {};

TEST_F(ReplyReader, ReceivesUntilSilenceAfterData) {
  const Reply reply =
      Read({kSilence, {0, BytesOf("ab")}, {-332, BytesOf("cde")}, kSilence, {0, BytesOf("late")}}, 10, 20);
  EXPECT_EQ("abcde", reply.bytes);
  EXPECT_EQ(4U, reply.receives);
}

TEST_F(ReplyReader, ReceivesAtLeastOnceAndPausesBetweenLaterReceives) {
  const std::tuple<int32_t, int64_t, size_t, Sleeps> rows[] = {
      {-5, 20, 1, {}}, {1, 20, 1, {}}, {3, -1, 3, {}}, {5, 20, 5, {20, 20, 20, 20}}, {3, 1, 3, {1, 1}}};
  for (const auto& [tries, pause_ms, receives, sleeps] : rows) {
    const Reply reply = Read({kSilence, {-332}, kSilence, {-332}, kSilence}, tries, pause_ms);
    EXPECT_EQ("", reply.bytes);
    EXPECT_EQ(receives, reply.receives) << tries;
    EXPECT_EQ(sleeps, reply.sleeps) << tries;
  }
}

TEST_F(ReplyReader, AnyOtherFailureEndsTheReplyAndIsNotReported) {
  const Step closed_meanwhile = {0, BytesOf("c"), {}, [this] { handle_.portOpen = 0; }};
  for (const Step& last : {Step{-309, BytesOf("c")}, Step{5, BytesOf("c")}, closed_meanwhile}) {
    const Reply reply = Read({{0, BytesOf("ab")}, last, {0, BytesOf("never")}}, 10, 20);
    EXPECT_EQ("abc", reply.bytes) << last.result;
    EXPECT_EQ(2U, reply.receives) << last.result;
  }
}

TEST_F(ReplyReader, BytesWithoutRoomAreDropped) {
  EXPECT_EQ("abcdefgh", Read({{0, BytesOf("abcdef")}, {0, BytesOf("ghijkl")}}, 10, 0).bytes);
  // USB ports also count the bytes of a packet that they dropped.
  EXPECT_EQ("abcdefgh", Read({{0, BytesOf("abcdefgh"), 64}}, 10, 0).bytes);
}

// A stream reader must not ask for more than fits: the rest belongs to the next read.
TEST(StreamReader, RequestsOnlyWhatFits) {
  ScriptedPort port;
  VexoPrinterHandle handle = OpenHandle(&port);
  uint8_t buffer[300];
  uint32_t stored = 99;
  for (const size_t size : {100, 80, 57}) {
    port.OnRead({0, Bytes(size, static_cast<uint8_t>(size))});
  }
  EXPECT_EQ(0, ReadStream(&handle, buffer, sizeof(buffer), &stored, 10, 20));
  EXPECT_EQ(237U, stored);
  EXPECT_EQ((std::vector<std::string>{"ReadAvailable(0, 300)", "ReadAvailable(0, 200)", "ReadAvailable(0, 120)"}),
            port.Operations())
      << "stops when a 64-byte packet might not fit";
  EXPECT_EQ(100, buffer[99]);
  EXPECT_EQ(80, buffer[179]);
  EXPECT_EQ(57, buffer[236]);
  port.OnRead({0, Bytes(300, 1), 400});
  EXPECT_EQ(0, ReadStream(&handle, buffer, sizeof(buffer), &stored, 10, 20));
  EXPECT_EQ(300U, stored) << "the port counted more than the buffer holds";
  handle.portOpen = 0;
  EXPECT_EQ(-309, ReadStream(&handle, buffer, sizeof(buffer), &stored, 1, 0));
}

TEST_F(ReplyReader, RefusesBeforeAnythingIsReceived) {
  ScriptedPort port;
  handle_ = OpenHandle(&port);
  uint8_t buffer[16];
  uint32_t stored = 0;
  EXPECT_EQ(-6, ReadReply(nullptr, buffer, 2, 10, &stored, 1, 0));
  EXPECT_EQ(-1, ReadReply(&handle_, buffer, 2, 1, &stored, 1, 0));
  handle_.portOpen = 0;
  EXPECT_EQ(-309, ReadReply(&handle_, buffer, 2, 10, &stored, 1, 0));
  EXPECT_EQ(0U, port.Operations().size());
}

}  // namespace
}  // namespace vexo::test
