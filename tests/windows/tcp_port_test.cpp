// TCP ports on real sockets: connecting, time limits, connections that drop, Abort.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>
#include <mstcpip.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "platform/sockets.h"
#include "port/socket/tcp_port.h"
#include "support/threads.h"
#include "windows/driver_port_test.h"
#include "windows/replaced_imports.h"

namespace vexo::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// More than the socket buffers of both ends hold.
constexpr uint32_t kLarge = 16 * 1024 * 1024;

class ObservedTcpPort : public TcpPort {
 public:
  SOCKET socket = INVALID_SOCKET;  // The latest socket.
  int sockets_made = 0;
  bool network_down = false;
  std::function<void(const std::string& step)> before;  // "socket 2", "options 2", "connect 2".

 protected:
  platform::Socket CreateSocket() override {
    if (network_down) {
      WSASetLastError(WSAENETDOWN);
      return platform::kNoSocket;
    }
    ++sockets_made;
    Announce("socket ");
    const platform::Socket made = TcpPort::CreateSocket();
    socket = static_cast<SOCKET>(made);
    return made;
  }
  int32_t SetOptions(platform::Socket made) override {
    Announce("options ");
    return TcpPort::SetOptions(made);
  }
  int StartConnect(platform::Socket made, const platform::SocketAddress& address) override {
    Announce("connect ");
    return TcpPort::StartConnect(made, address);
  }

 private:
  void Announce(const char* step) const {
    if (const auto announce = before) {
      announce(step + std::to_string(sockets_made));
    }
  }
};

tcp_keepalive g_keep_alive = {};
int g_keep_alive_calls = 0;

// Fails at the first call.
int WSAAPI SetKeepAlive(SOCKET /*socket*/, DWORD /*code*/, void* times, DWORD /*size*/, void* /*output*/,
                        DWORD /*output_size*/, DWORD* /*returned*/, WSAOVERLAPPED* /*overlapped*/,
                        LPWSAOVERLAPPED_COMPLETION_ROUTINE /*routine*/) {
  memcpy(&g_keep_alive, times, sizeof(g_keep_alive));
  return ++g_keep_alive_calls > 1 ? 0 : SOCKET_ERROR;
}

// Sends a piece, then simulates a thread that is not scheduled for a while.
int WSAAPI SendAndStall(SOCKET socket, const char* bytes, int length, int flags) {
  const int sent = SystemFunction<decltype(send)>("ws2_32.dll", "send")(socket, bytes, length, flags);
  for (const DWORD started = GetTickCount(); GetTickCount() - started < 60;) {
  }
  return sent;
}

// Fails without an error code at first.
int WSAAPI SendAfterRetry(SOCKET socket, const char* bytes, int length, int flags) {
  static int calls = 0;
  if (++calls == 1) {
    WSASetLastError(0);
    return SOCKET_ERROR;
  }
  return SystemFunction<decltype(send)>("ws2_32.dll", "send")(socket, bytes, length, flags);
}

class TcpPortTest : public DriverPortTest<ObservedTcpPort, VEXO_PORT_NET> {
 protected:
  // Sufficient on any machine. The read interval also applies within every successful Read.
  static constexpr VexoPortTimeouts kPatient = {20'000, 0, 20'000, 0, 20'000, 20'000};

  void Configure(const LoopbackPrinter& printer, VexoPortTimeouts timeouts) {
    ASSERT_EQ(port_->Configure(port_, printer.uri().c_str()), VEXO_OK);
    ASSERT_EQ(port_->SetTimeouts(port_, timeouts), VEXO_OK);
  }

  // Opens the port and returns the printer's end.
  Connection Connect(VexoPortTimeouts timeouts = kPatient) {
    Configure(printer_, timeouts);
    EXPECT_EQ(port_->Open(port_), VEXO_OK);
    return printer_.Accept();
  }

  // Run the transfer on another thread.
  std::future<Written> StartWrite(const std::string& bytes) {
    return std::async(std::launch::async, [=] { return Write(port_, bytes); });
  }
  std::future<Reading> StartRead(uint32_t length) {
    return std::async(std::launch::async, [=] { return Read(port_, length); });
  }

  // Closes the port as soon as the Write has ended.
  std::future<void> CloseAfter(const std::future<Written>& write) {
    return std::async(std::launch::async, [&] {
      write.wait();
      port_->Close(port_);
    });
  }

  LoopbackPrinter printer_;
};

TEST_F(TcpPortTest, PortNumberIs9100UnlessGiven) {
  EXPECT_EQ(port_->Configure(port_, "vexo:/dev/bus/NET/DEVICE?ip=+port=9100"), VEXO_ERROR_IO_SETTING);
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_SETTING);
  const std::string ip = OwnIp("127.9");  // Port 9100 is free at this address.
  LoopbackPrinter printer(PrinterState::kListening, ip, 9100);
  for (const char* port : {"", "+port=91x"}) {
    SCOPED_TRACE(port);
    ASSERT_EQ(port_->Configure(port_, ("vexo:/dev/bus/NET/DEVICE?ip=" + ip + port).c_str()), VEXO_OK);
    EXPECT_EQ(port_->Open(port_), VEXO_OK);
    EXPECT_EQ(port_->Close(port_), VEXO_OK);
  }
}

TEST_F(TcpPortTest, SocketIsSetUpForShortCommands) {
  ExpectTimeouts(port_, {10, 0, 2000, 0, 2000, 3000});
  const ScopedImports imports(GetModuleHandleA(nullptr), "ws2_32.dll",
                              {{"WSAIoctl", reinterpret_cast<void*>(SetKeepAlive)}});
  Connection connection = Connect({10, 0, 2100, 0, 2200, 20'000});
  EXPECT_EQ(g_keep_alive_calls, 2) << "repeated once";
  EXPECT_EQ(g_keep_alive.onoff, 1U);
  EXPECT_EQ(g_keep_alive.keepalivetime, 3000U);
  EXPECT_EQ(g_keep_alive.keepaliveinterval, 2000U);
  const auto expect_option = [this](int level, int name, int expected_value) {
    int value = 0;  // The system may write only one byte.
    int size = sizeof(value);
    EXPECT_EQ(getsockopt(driver_->socket, level, name, reinterpret_cast<char*>(&value), &size), 0);
    EXPECT_EQ(value, expected_value) << level << ", " << name;
  };
  expect_option(IPPROTO_TCP, TCP_NODELAY, 1);
  expect_option(SOL_SOCKET, SO_KEEPALIVE, 1);
  expect_option(SOL_SOCKET, SO_SNDBUF, 8192);
  expect_option(SOL_SOCKET, SO_RCVBUF, 8192);
  expect_option(SOL_SOCKET, SO_RCVTIMEO, 2100);
  EXPECT_EQ(port_->SetTimeouts(port_, {10, 0, 2300, 0, 2400, 20'000}), VEXO_OK);
  expect_option(SOL_SOCKET, SO_RCVTIMEO, 2300);
  expect_option(SOL_SOCKET, SO_SNDTIMEO, 2400);
  EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
  EXPECT_EQ(driver_->sockets_made, 1);
}

// The printer may refuse while it serves another host, or the network may be down briefly. Each attempt has the full
// time limit.
TEST_F(TcpPortTest, ConnectIsAttemptedTwice) {
  const LoopbackPrinter refusing(PrinterState::kRefusing);
  for (const std::string& uri : {refusing.uri(), std::string("vexo:/dev/bus/NET/DEVICE?ip=no.address")}) {
    SCOPED_TRACE(uri);
    driver_->sockets_made = 0;
    ASSERT_EQ(port_->Configure(port_, uri.c_str()), VEXO_OK);
    ASSERT_EQ(port_->SetTimeouts(port_, {10, 0, 2000, 0, 2000, 150}), VEXO_OK);
    const auto started = steady_clock::now();
    EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_OPEN_FAILED);
    EXPECT_GE(steady_clock::now() - started, milliseconds(2 * 150));
    EXPECT_EQ(driver_->sockets_made, 2);
  }
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  Connection connection = Connect();
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3)) << "Abort after a failed Open has no effect";
}

TEST_F(TcpPortTest, ClosedPortTransfersNothing) {
  Connection connection = Connect();
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(connection.Receive(1), "") << "the connection is closed";
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_ERROR_IO_NOT_OPEN, 0));
  EXPECT_EQ(Read(port_, 3), Reading(VEXO_ERROR_IO_NOT_OPEN, 0, ""));
  EXPECT_EQ(ReadAvailable(port_, 3), Reading(VEXO_ERROR_IO_NOT_OPEN, 0, ""));
  EXPECT_EQ(port_->CheckOpen(port_), VEXO_OK);
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  Connection next = Connect();
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3)) << "Abort of the closed port has no effect";
}

// An unbalanced WSACleanup would end the host's own use of Winsock.
TEST_F(TcpPortTest, UsesOfWinsockAreBalanced) {
  Connect();
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
  driver_->network_down = true;
  EXPECT_EQ(port_->Open(port_), WSAENETDOWN);
  {
    std::array<std::future<void>, 4> hosts;
    std::generate(hosts.begin(), hosts.end(), [] {
      return std::async(std::launch::async, [] {
        platform::SocketLibrary use;
        for (int i = 0; i < 1'000'000; ++i) {
          use.Start();
          use.Stop();
        }
      });
    });
  }
  EXPECT_EQ(WSACleanup(), 0);
  EXPECT_EQ(WSACleanup(), SOCKET_ERROR) << "WSAStartup without WSACleanup";
  WSADATA data = {};
  EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0) << "for the printer's end";
}

TEST_F(TcpPortTest, SilenceEndsAfterTheBudgetAndGapsAfterTheInterval) {
  Connection connection = Connect({10, 0, 100, 0, 2000, 20'000});
  const auto started = steady_clock::now();
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 0, ""));
  EXPECT_GE(steady_clock::now() - started, milliseconds(100));

  // The budget is very long, so only the read interval can end this read.
  ASSERT_EQ(port_->SetTimeouts(port_, {10, 0, 3'000'000, 0, 2000, 20'000}), VEXO_OK);
  connection.Send("abcd");
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_ERROR_IO_READ_TIMEOUT, 4, "abcd"));
}

TEST_F(TcpPortTest, ZeroBudgetMeansNoLimit) {
  Connection connection = Connect({10, 0, 0, 0, 0, 20'000});
  std::future<Reading> read = StartRead(4);
  EXPECT_EQ(read.wait_for(milliseconds(100)), std::future_status::timeout);
  connection.Send("ab");
  EXPECT_EQ(read.wait_for(milliseconds(100)), std::future_status::timeout);
  connection.Send("cd");
  EXPECT_EQ(read.get(), Reading(VEXO_OK, 4, "abcd"));

  std::future<Written> write = StartWrite(Pattern(kLarge));
  EXPECT_EQ(write.wait_for(milliseconds(100)), std::future_status::timeout);
  EXPECT_TRUE(connection.Receive(kLarge) == Pattern(kLarge));
  EXPECT_EQ(write.get(), Written(VEXO_OK, kLarge));
}

TEST_F(TcpPortTest, BudgetGrowsWithTheLength) {
  Connection connection = Connect({20'000, 20'000, 1, 1, 1, 20'000});
  std::future<Reading> read = StartRead(4);
  EXPECT_EQ(read.wait_for(milliseconds(100)), std::future_status::timeout);
  connection.Send("abcd");
  EXPECT_EQ(read.get(), Reading(VEXO_OK, 4, "abcd"));
  std::future<Written> write = StartWrite(Pattern(kLarge));
  EXPECT_EQ(write.wait_for(milliseconds(100)), std::future_status::timeout);
  EXPECT_TRUE(connection.Receive(kLarge) == Pattern(kLarge));
  EXPECT_EQ(write.get(), Written(VEXO_OK, kLarge));
}

// The result is a timeout if the printer accepts nothing for the whole budget, but OK if the budget is exceeded between
// two chunks.
TEST_F(TcpPortTest, WriteReturnsThePartialCount) {
  Connection connection = Connect({10, 0, 2000, 0, 1000, 20'000});  // More than this thread may be kept waiting.
  const auto [result, written] = Write(port_, Pattern(kLarge));
  EXPECT_EQ(result, VEXO_ERROR_IO_WRITE_TIMEOUT);
  EXPECT_LT(written, kLarge);
  port_->Close(port_);
  EXPECT_EQ(connection.ReceiveRest().size(), written);

  Connection second = Connect({10, 0, 2000, 0, 50, 20'000});
  const ScopedImports imports(GetModuleHandleA(nullptr), "ws2_32.dll",
                              {{"send", reinterpret_cast<void*>(SendAndStall)}});
  EXPECT_EQ(Write(port_, Pattern(kLarge)), Written(VEXO_OK, 8192));
}

TEST_F(TcpPortTest, SendThatFailsWithoutACodeIsRepeated) {
  Connection connection = Connect();
  const ScopedImports imports(GetModuleHandleA(nullptr), "ws2_32.dll",
                              {{"send", reinterpret_cast<void*>(SendAfterRetry)}});
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
  EXPECT_EQ(connection.Receive(3), "abc");
}

TEST_F(TcpPortTest, ReadAvailableDoesNotWait) {
  Connection connection = Connect();
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 0, ""));
  connection.Send("abcdef");
  EXPECT_EQ(Read(port_, 1), Reading(VEXO_OK, 1, "a")) << "waits for the packet";
  EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3)) << "unread data does not count as a lost connection";
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 4, "bcde"));
  EXPECT_EQ(ReadAvailable(port_, 4), Reading(VEXO_OK, 1, "f"));
}

TEST_F(TcpPortTest, ConnectionClosedDuringAReadIsRestoredAndTheReadEnds) {
  Connection connection = Connect();
  connection.Send("abcd");
  connection.Close();
  EXPECT_EQ(Read(port_, 10), Reading(VEXO_OK, 4, "abcd"));
  Connection second = printer_.Accept();
  second.Send("efgh");
  EXPECT_EQ(Read(port_, 4), Reading(VEXO_OK, 4, "efgh"));
}

TEST_F(TcpPortTest, DroppedConnectionIsRestoredBeforeAWrite) {
  for (const auto drop : {&Connection::Close, &Connection::Reset}) {
    Connection connection = Connect();
    (connection.*drop)();
    driver_->network_down = true;
    EXPECT_EQ(Write(port_, "abc"), Written(WSAENETDOWN, 0));
    EXPECT_EQ(Read(port_, 3), Reading(WSAENOTSOCK, 0, "")) << "only a Write reconnects";
    EXPECT_EQ(ReadAvailable(port_, 3), Reading(WSAENOTSOCK, 0, ""));
    EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_ALREADY_OPEN);
    driver_->network_down = false;
    EXPECT_EQ(Write(port_, "abc"), Written(VEXO_OK, 3));
    EXPECT_EQ(printer_.Accept().Receive(3), "abc");
    EXPECT_EQ(Write(port_, "def"), Written(VEXO_OK, 3));
    EXPECT_EQ(printer_.Accept().Receive(3), "def");
    port_->Close(port_);
  }
}

TEST_F(TcpPortTest, RestIsSentOverTheNewConnectionAndOnlyOneIsMade) {
  const std::string data = Pattern(kLarge);
  for (const bool again : {false, true}) {
    Connection connection = Connect();
    driver_->sockets_made = 1;
    std::future<Written> write = StartWrite(data);
    EXPECT_EQ(connection.Receive(1).size(), 1U);
    connection.Reset();
    const std::future<void> close = CloseAfter(write);
    Connection second = printer_.Accept();
    std::string rest = second.Receive(1);
    if (again) {
      second.Reset();
    } else {
      rest += second.ReceiveRest();
      EXPECT_TRUE(data.compare(data.size() - rest.size(), rest.size(), rest) == 0) << "not the end of the data";
    }
    const auto [result, written] = write.get();
    EXPECT_EQ(result, again ? WSAECONNRESET : VEXO_OK);
    EXPECT_EQ(written == kLarge, !again);
    EXPECT_EQ(driver_->sockets_made, 2);
    close.wait();
  }
}

// Another thread closes the port while Open or a transfer connects. After that, nothing is connected or sent, even if
// the printer is reachable.
TEST_F(TcpPortTest, PortClosedWhileItConnectsStaysClosed) {
  for (const char* const transfer : {"Write", "Read", "Open"}) {
    for (const char* const step : {"socket 1", "options 1", "connect 1", "socket 2", "options 2", "connect 2"}) {
      for (const bool opens_again : {false, true}) {
        SCOPED_TRACE(testing::Message() << transfer << " closed before " << step << ", " << opens_again);
        Connection connection = Connect({10, 0, 20'000, 0, 20'000, 50});
        if (transfer == std::string("Open")) {
          port_->Close(port_);
        }
        connection.Reset();
        printer_.StopListening();
        driver_->sockets_made = 0;
        std::future<void> closing;
        driver_->before = [&](const std::string& now) {
          if (now != step) {
            return;
          }
          driver_->before = nullptr;
          closing = std::async(std::launch::async, [&] {
            port_->Close(port_);
            printer_.Listen();
            EXPECT_TRUE(!opens_again || port_->Open(port_) == VEXO_OK);
          });
          if (now.front() != 'c') {  // Close waits for a connect that has started.
            closing.wait();
          }
        };
        if (transfer == std::string("Write")) {
          EXPECT_EQ(Write(port_, Pattern(3000)), Written(VEXO_ERROR_IO_NOT_OPEN, 0));
        } else if (transfer == std::string("Read")) {
          const auto [result, read, bytes] = Read(port_, 10);
          EXPECT_TRUE(result == VEXO_ERROR_IO_NOT_OPEN || result == WSAECONNRESET) << result;
        } else {
          EXPECT_EQ(port_->Open(port_), VEXO_ERROR_IO_NOT_OPEN);
        }
        closing.wait();
        if (opens_again) {
          EXPECT_EQ(Write(port_, "a"), Written(VEXO_OK, 1));
          Connection second = printer_.Accept();
          port_->Close(port_);
          EXPECT_EQ(second.ReceiveRest(), "a");
        }
        EXPECT_FALSE(printer_.HasPendingConnection());
      }
    }
  }
}

// The system reuses the number of a closed socket for the next one.
TEST_F(TcpPortTest, LateThreadReadsNoDataOfAnotherPort) {
  Configure(printer_, kPatient);
  LoopbackPrinter other_printer;
  VexoPort* const other = MakePort(VEXO_PORT_NET, std::make_unique<TcpPort>());
  ASSERT_EQ(other->Configure(other, other_printer.uri().c_str()), VEXO_OK);
  ASSERT_EQ(other->SetTimeouts(other, kPatient), VEXO_OK);
  std::atomic<bool> done{false};
  RunOnThreads(4, [&](int thread) {
    if (thread == 0) {
      for (int round = 0; round < 200; ++round) {
        EXPECT_EQ(port_->Open(port_), VEXO_OK);
        printer_.Accept();
        port_->Close(port_);
      }
      done = true;
    }
    while (thread > 1 && !done) {
      ReadAvailable(port_, 64);
    }
    while (thread == 1 && !done) {
      ASSERT_EQ(other->Open(other), VEXO_OK);
      Connection connection = other_printer.Accept();
      connection.Send("answer");
      ASSERT_EQ(Read(other, 6), Reading(VEXO_OK, 6, "answer"));
      other->Close(other);
    }
  });
  EXPECT_EQ(ClosePort(other), VEXO_OK);
}

TEST_F(TcpPortTest, AbortStopsTransfersBetweenChunks) {
  Connection connection = Connect();
  std::future<Written> write = StartWrite(Pattern(kLarge));
  EXPECT_EQ(connection.Receive(1).size(), 1U);
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  const std::future<void> close = CloseAfter(write);
  const size_t received = 1 + connection.ReceiveRest().size();
  EXPECT_EQ(write.get(), Written(VEXO_OK, received));
  EXPECT_LT(received, kLarge);
  close.wait();

  Connection next = Connect();
  std::future<Reading> read = StartRead(4);
  EXPECT_EQ(port_->Abort(port_), VEXO_OK);
  next.Send("ab");
  EXPECT_LT(std::get<uint32_t>(read.get()), 4U);
  EXPECT_EQ(Write(port_, "more"), Written(VEXO_OK, 0));
}

}  // namespace
}  // namespace vexo::test
