// Reads on a TCP port: time limits, the end of the connection, Abort.
#include "windows/tcp_port_fixture.h"

namespace vexo {
namespace {

using test::Connection;
using test::LoopbackPrinter;
using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::Write;
using test::Written;

using TcpReadTest = test::TcpPortTest;

TEST_F(TcpReadTest, AnswerInPiecesIsPutTogether) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  connection.Send("abcd");
  std::future<Reading> read = StartRead(10);
  connection.Send("efghijkl");
  EXPECT_EQ(read.get(), Reading(VEXO_OK, 10, "abcdefghij"));
  EXPECT_EQ(ReadAvailable(port_, 10), Reading(VEXO_OK, 2, "kl"));
}

TEST_F(TcpReadTest, SilenceEndsAfterTheBudgetAndGapsAfterTheInterval) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer, {10, 0, 100, 0, 2000, 20'000});
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(100));

  // Were the gap not limited by the interval, the read would not end.
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 0, 3'000'000, 0, 2000, 20'000}), VEXO_OK);
  connection.Send("abcd");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 4, "abcd"));
}

TEST_F(TcpReadTest, NoBudgetIsNoLimit) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer, {10, 0, 0, 0, 2000, 20'000});
  std::future<Reading> read = StartRead(4);
  EXPECT_EQ(read.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  connection.Send("ab");
  EXPECT_EQ(read.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  connection.Send("cd");
  EXPECT_EQ(read.get(), Reading(VEXO_OK, 4, "abcd"));
}

TEST_F(TcpReadTest, ClosedConnectionIsRestoredAndTheReadEnds) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  connection.Send("abcd");
  connection.Close();
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 4, "abcd"));
  Connection second = printer.Accept();
  second.Send("efgh");
  EXPECT_EQ(Read(port_, 4), Reading(VEXO_OK, 4, "efgh"));

  second.Close();
  driver_->connect_error = WSAENETUNREACH;
  EXPECT_EQ(Read(port_, 10), Reading(WSAENETUNREACH, 0, ""));
}

TEST_F(TcpReadTest, ReadAvailableDoesNotWait) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 0, ""));
  connection.Send("abcdef");
  EXPECT_EQ(Read(port_, 1), Reading(VEXO_OK, 1, "a")) << "the packet is there";
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 4, "bcde"));
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 1, "f"));
  connection.Close();
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3)) << "the drop is the next Write's affair";
}

TEST_F(TcpReadTest, AbortStopsAReadBetweenPieces) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  std::future<Reading> read = StartRead(4);
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  connection.Send("ab");
  const auto [result, count, bytes] = read.get();
  EXPECT_EQ(result, VEXO_OK);
  EXPECT_LT(count, 4U);
  EXPECT_EQ(Read(port_, 4), Reading(VEXO_OK, 0, ""));
}

}  // namespace
}  // namespace vexo
