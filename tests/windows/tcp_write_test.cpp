// Writes on a TCP port: dropped connections, time limits, Abort.
#include "windows/tcp_port_fixture.h"

namespace vexo {
namespace {

using test::Connection;
using test::LoopbackPrinter;
using test::Pattern;
using test::Read;
using test::Reading;
using test::Write;
using test::Written;

// More than all buffers between the two ends hold.
constexpr uint32_t kLarge = 16 * 1024 * 1024;

using TcpWriteTest = test::TcpPortTest;

TEST_F(TcpWriteTest, AllBytesArriveInOrder) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  const std::string data = Pattern(1'000'003);
  std::future<Written> write = StartWrite(data);
  EXPECT_EQ(connection.Receive(data.size()), data);
  EXPECT_EQ(write.get(), Written(VEXO_OK, data.size()));
  EXPECT_EQ(Write(port_, ""), Written(VEXO_OK, 0));
}

TEST_F(TcpWriteTest, DroppedConnectionIsRestoredFirst) {
  for (const auto drop : {&Connection::Close, &Connection::Reset}) {
    LoopbackPrinter printer;
    Connection connection = Connect(&printer);
    (connection.*drop)();
    EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
    EXPECT_EQ(printer.Accept().Receive(3), "abc");
    port_->Close(port_);
  }
}

TEST_F(TcpWriteTest, WaitingDataIsNoDrop) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  connection.Send("status");
  EXPECT_EQ(Read(port_, 1), Reading(VEXO_OK, 1, "s"));
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
  EXPECT_EQ(connection.Receive(3), "abc");
  EXPECT_EQ(Read(port_, 5), Reading(VEXO_OK, 5, "tatus"));
}

TEST_F(TcpWriteTest, PrinterThatIsGoneIsLookedForAgainNextTime) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  connection.Close();
  driver_->connect_error = WSAENETUNREACH;
  EXPECT_EQ(Write(port_, "abc"), Written(WSAENETUNREACH, 0));
  EXPECT_EQ(Read(port_, 3), Reading(WSAENETUNREACH, 0, ""));
  driver_->connect_error = 0;
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
  EXPECT_EQ(printer.Accept().Receive(3), "abc");
}

TEST_F(TcpWriteTest, ResetInTheMiddleIsRepairedOnce) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  std::future<Written> write = StartWrite(Pattern(kLarge));
  EXPECT_EQ(connection.Receive(1).size(), 1U);
  connection.Reset();
  Connection second = printer.Accept();
  EXPECT_EQ(second.Receive(1).size(), 1U);
  second.Reset();
  const auto [result, written] = write.get();
  EXPECT_EQ(result, WSAECONNRESET);
  EXPECT_GT(written, 0U);
  EXPECT_LT(written, kLarge);
  EXPECT_EQ(driver_->sockets_made, 2);
}

TEST_F(TcpWriteTest, RestGoesOverTheRestoredConnection) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  const std::string data = Pattern(kLarge);
  std::future<Written> write = StartWrite(data);
  EXPECT_EQ(connection.Receive(1).size(), 1U);
  connection.Reset();
  std::future<void> close = std::async(std::launch::async, [&] {
    write.wait();
    port_->Close(port_);
  });
  const std::string rest = printer.Accept().ReceiveRest();
  EXPECT_EQ(write.get(), Written(VEXO_OK, kLarge));
  EXPECT_GT(rest.size(), 0U);
  EXPECT_TRUE(data.compare(data.size() - rest.size(), rest.size(), rest) == 0) << "the end of the data, in order";
}

TEST_F(TcpWriteTest, PrinterThatTakesNothingMoreEndsTheWrite) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer, {10, 0, 2000, 0, 1000, 20'000});
  const auto [result, written] = Write(port_, Pattern(kLarge));
  EXPECT_EQ(result, VEXO_ERROR_IO_WRITE_TIMEOUT);
  EXPECT_GT(written, 0U);
  EXPECT_LT(written, kLarge);
}

TEST_F(TcpWriteTest, NoBudgetIsNoLimit) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer, {10, 0, 0, 0, 0, 20'000});
  const std::string data = Pattern(kLarge);
  std::future<Written> write = StartWrite(data);
  EXPECT_EQ(write.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  EXPECT_TRUE(connection.Receive(kLarge) == data);
  EXPECT_EQ(write.get(), Written(VEXO_OK, kLarge));
}

TEST_F(TcpWriteTest, AbortStopsBetweenPieces) {
  LoopbackPrinter printer;
  Connection connection = Connect(&printer);
  std::future<Written> write = StartWrite(Pattern(kLarge));
  EXPECT_EQ(connection.Receive(1).size(), 1U);
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  std::future<void> close = std::async(std::launch::async, [&] {
    write.wait();
    EXPECT_EQ(Write(port_, "more"), Written(VEXO_OK, 0));
    EXPECT_EQ(Read(port_, 4), Reading(VEXO_OK, 0, ""));
    port_->Close(port_);
  });
  const size_t received = 1 + connection.ReceiveRest().size();
  const auto [result, written] = write.get();
  EXPECT_EQ(result, VEXO_OK);
  EXPECT_LT(written, kLarge);
  EXPECT_EQ(received, written);
}

}  // namespace
}  // namespace vexo
