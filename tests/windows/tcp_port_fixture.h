// A TCP port object whose sockets can be seen, and made to fail.
#ifndef VEXO_TESTS_WINDOWS_TCP_PORT_FIXTURE_H_
#define VEXO_TESTS_WINDOWS_TCP_PORT_FIXTURE_H_

#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>

#include "port/port_object.h"
#include "port/tcp_port.h"
#include "windows/port_calls.h"

namespace vexo::test {

class ObservedTcpPort : public TcpPort {
 public:
  SOCKET socket = INVALID_SOCKET;  // The latest one.
  int sockets_made = 0;
  int create_error = 0;   // Unless 0, no socket can be made.
  int connect_error = 0;  // Unless 0, the network is down.

 protected:
  SOCKET CreateSocket() override {
    if (create_error != 0) {
      WSASetLastError(create_error);
      return INVALID_SOCKET;
    }
    ++sockets_made;
    socket = TcpPort::CreateSocket();
    return socket;
  }

  int StartConnect(SOCKET unconnected) override {
    if (connect_error != 0) {
      WSASetLastError(connect_error);
      return SOCKET_ERROR;
    }
    return TcpPort::StartConnect(unconnected);
  }
};

class TcpPortTest : public ::testing::Test {
 protected:
  // Limits that no machine is too slow for. The read interval is part of every successful Read, too.
  static constexpr VexoPortTimeouts kPatient = {20'000, 0, 20'000, 0, 20'000, 20'000};

  TcpPortTest() {
    PortLockReference lock;
    EXPECT_EQ(lock.Take(), 0);
    auto driver = std::make_unique<ObservedTcpPort>();
    driver_ = driver.get();
    port_ = MakePortObject(VEXO_PORT_NET, std::move(driver), std::move(lock));
  }

  ~TcpPortTest() override { EXPECT_EQ(ClosePort(port_), VEXO_OK); }

  void Configure(const LoopbackPrinter& printer, VexoPortTimeouts timeouts = kPatient) {
    ASSERT_EQ(port_->Configure(port_, printer.uri().c_str()), VEXO_OK);
    ASSERT_EQ(port_->SetTimeouts(port_, timeouts), VEXO_OK);
  }

  // Opens the port; the printer's end is the result.
  Connection Connect(LoopbackPrinter* printer, VexoPortTimeouts timeouts = kPatient) {
    Configure(*printer, timeouts);
    EXPECT_EQ(port_->Open(port_), VEXO_OK);
    return printer->Accept();
  }

  // The transfers on a thread of their own.
  std::future<Written> StartWrite(const std::string& bytes) {
    return std::async(std::launch::async, [=] { return Write(port_, bytes); });
  }
  std::future<Reading> StartRead(uint32_t length) {
    return std::async(std::launch::async, [=] { return Read(port_, length); });
  }

  ObservedTcpPort* driver_ = nullptr;
  VexoPort* port_ = nullptr;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_TCP_PORT_FIXTURE_H_
