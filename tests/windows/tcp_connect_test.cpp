// How a TCP port finds its printer, connects to it and lets go of it.
#include "windows/tcp_port_fixture.h"

#include <chrono>

namespace vexo {
namespace {

using test::LoopbackPrinter;
using test::PrinterState;
using test::Read;
using test::ReadAvailable;
using test::Reading;
using test::Write;
using test::Written;

using TcpConnectTest = test::TcpPortTest;

TEST_F(TcpConnectTest, PortNumberIs9100UnlessGiven) {
  // An address that no other test run on this machine uses, so that port 9100 is free.
  const DWORD process = GetCurrentProcessId();
  const std::string ip = "127.9." + std::to_string(process / 4 % 250) + '.' + std::to_string(process % 4 + 1);
  LoopbackPrinter printer(PrinterState::kListening, ip, 9100);
  for (const char* port : {"", "+port=abc", "+port=91x", "+port=9100"}) {
    SCOPED_TRACE(port);
    ASSERT_EQ(port_->Configure(port_, ("vexo:/dev/bus/NET/DEVICE?ip=" + ip + port).c_str()), VEXO_OK);
    EXPECT_EQ(port_->Open(port_), VEXO_OK);
    EXPECT_EQ(port_->Close(port_), VEXO_OK);
  }
}

TEST_F(TcpConnectTest, ConfigureNeedsAnAddress) {
  for (const char* uri : {"vexo:/dev/bus/NET/DEVICE", "vexo:/dev/bus/NET/DEVICE?port=9100",
                          "vexo:/dev/bus/NET/DEVICE?ip=+port=9100", "vexo:/dev/bus/NET/DEVICE?IP=127.0.0.1"}) {
    EXPECT_EQ(port_->Configure(port_, uri), VEXO_ERROR_IO_SETTING) << uri;
  }
  EXPECT_EQ(port_->Configure(port_, "NET,127.0.0.1"), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_SETTING);
}

TEST_F(TcpConnectTest, SocketIsSetUpForShortCommands) {
  LoopbackPrinter printer;
  const auto option = [this](int level, int name) {
    int value = -1;
    int size = sizeof(value);
    EXPECT_EQ(getsockopt(driver_->socket, level, name, reinterpret_cast<char*>(&value), &size), 0);
    return value;
  };
  Configure(printer, {10, 0, 2100, 0, 2200, 20'000});
  ASSERT_EQ(port_->Open(port_), VEXO_OK);
  EXPECT_EQ(option(IPPROTO_TCP, TCP_NODELAY) & 1, 1);
  EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE) & 1, 1);
  EXPECT_EQ(option(SOL_SOCKET, SO_SNDBUF), 8192);
  EXPECT_EQ(option(SOL_SOCKET, SO_RCVBUF), 8192);
  EXPECT_EQ(option(SOL_SOCKET, SO_RCVTIMEO), 2100);
  EXPECT_EQ(option(SOL_SOCKET, SO_SNDTIMEO), 2200);

  EXPECT_EQ(port_->SetTimeouts(port_, {10, 0, 2300, 0, 2400, 20'000}), VEXO_OK);
  EXPECT_EQ(option(SOL_SOCKET, SO_RCVTIMEO), 2300);
  EXPECT_EQ(option(SOL_SOCKET, SO_SNDTIMEO), 2400);
}

TEST_F(TcpConnectTest, OpenPortIsLeftAsItIs) {
  LoopbackPrinter printer;
  test::Connection connection = Connect(&printer);
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
  EXPECT_EQ(connection.Receive(3), "abc");
  EXPECT_EQ(driver_->sockets_made, 1);
}

// Whether it is switched off or serves another host, a printer is given the whole time, twice.
TEST_F(TcpConnectTest, PrinterThatDoesNotAnswerIsTriedTwice) {
  using std::chrono::milliseconds;
  for (const PrinterState state : {PrinterState::kOff, PrinterState::kRefusing}) {
    SCOPED_TRACE(static_cast<int>(state));
    LoopbackPrinter printer(state);
    Configure(printer, {10, 0, 2000, 0, 2000, 150});
    driver_->sockets_made = 0;
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_OPEN_FAILED);
    EXPECT_GE(std::chrono::steady_clock::now() - started, milliseconds(2 * 150));
    EXPECT_EQ(driver_->sockets_made, 2);
    EXPECT_EQ(Write(port_, "abc"), Written(VEXO_ERROR_IO_NOT_OPEN, 0));
  }
}

TEST_F(TcpConnectTest, SystemErrorsArePassedOn) {
  LoopbackPrinter printer;
  Configure(printer);
  driver_->create_error = WSAEMFILE;
  EXPECT_EQ(port_->Open(port_), WSAEMFILE);
  driver_->create_error = 0;
  driver_->connect_error = WSAENETUNREACH;
  EXPECT_EQ(port_->Open(port_), WSAENETUNREACH);
  EXPECT_EQ(driver_->sockets_made, 2);
  driver_->connect_error = 0;
  EXPECT_EQ(port_->Open(port_), VEXO_OK);
}

TEST_F(TcpConnectTest, ClosedPortTransfersNothing) {
  LoopbackPrinter printer;
  const auto expect_closed = [this] {
    EXPECT_EQ(Write(port_, "abc"), Written(VEXO_ERROR_IO_NOT_OPEN, 0));
    EXPECT_EQ(Read(port_, 3), Reading(VEXO_ERROR_IO_NOT_OPEN, 0, ""));
    EXPECT_EQ(ReadAvailable(port_, 3), Reading(VEXO_ERROR_IO_NOT_OPEN, 0, ""));
    EXPECT_EQ(port_->CheckOpen(port_), VEXO_OK);
    EXPECT_EQ(port_->Abort(port_), VEXO_OK);
    EXPECT_EQ(port_->Close(port_), VEXO_OK);
  };
  expect_closed();
  test::Connection connection = Connect(&printer);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(connection.Receive(1), "") << "the printer sees the end of the connection";
  expect_closed();

  test::Connection next = Connect(&printer);
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3)) << "no Abort of the closed port is left";
  EXPECT_EQ(next.Receive(3), "abc");
}

// The host has its own use of Winsock, which a Close too many would end.
TEST_F(TcpConnectTest, UsesOfWinsockAreBalanced) {
  LoopbackPrinter printer;
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  Connect(&printer);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  driver_->connect_error = WSAENETUNREACH;
  EXPECT_EQ(port_->Open(port_), WSAENETUNREACH);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);

  EXPECT_EQ(WSACleanup(), 0);
  EXPECT_EQ(WSACleanup(), SOCKET_ERROR) << "a use was left behind";
  WSADATA data = {};
  EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0) << "for the printer's own end";
}

}  // namespace
}  // namespace vexo
