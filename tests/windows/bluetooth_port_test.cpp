// The Bluetooth port, tested over a loopback socket, and its failure on a machine without Bluetooth.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <string>

#include "port/port_factory.h"
#include "port/socket/bluetooth_port.h"
#include "windows/driver_port_test.h"
#include "windows/replaced_imports.h"

namespace vexo::test {
namespace {

// The real driver except for the socket type and address.
class LoopbackBluetoothPort : public BluetoothPort {
 public:
  uint16_t printer_port = 0;
  int sockets_made = 0;
  int binds = 0;
  bool binding_connects = false;

 protected:
  platform::Socket CreateSocket() override {
    ++sockets_made;
    return platform::MakeTcpSocket();
  }
  bool IsConnectedByBinding(platform::Socket socket, const platform::SocketAddress& address) override {
    ++binds;
    return BluetoothPort::IsConnectedByBinding(socket, address) || binding_connects;
  }
  int StartConnect(platform::Socket socket, const platform::SocketAddress& /*address*/) override {
    return platform::StartConnect(socket, platform::Ipv4Address("127.0.0.1", printer_port));
  }
};

constexpr char kUri[] = "vexo:/dev/bus/BT/DEVICE?address=0011aaFF22bb+pin=0000";

class BluetoothPortTest : public DriverPortTest<LoopbackBluetoothPort, VEXO_PORT_BLUETOOTH> {
 protected:
  BluetoothPortTest() {
    driver_->printer_port = printer_.port();
    EXPECT_EQ(port_->Configure(port_, kUri), VEXO_OK);
  }

  LoopbackPrinter printer_;
};

TEST_F(BluetoothPortTest, TransfersDataAndReconnects) {
  ASSERT_EQ(port_->SetTimeouts(port_, {5000, 0, 5000, 0, 20'000, 20'000}), VEXO_OK);
  ASSERT_EQ(port_->Open(port_), VEXO_OK);
  Connection first = printer_.Accept();
  EXPECT_EQ(Write(port_, "first"), Written(VEXO_OK, 5));
  EXPECT_EQ(first.Receive(5), "first");
  first.Send("answer");
  EXPECT_EQ(Read(port_, 6), Reading(VEXO_OK, 6, "answer"));
  first.Reset();  // The next Write reconnects.
  EXPECT_EQ(Write(port_, "job"), Written(VEXO_OK, 3));
  EXPECT_EQ(printer_.Accept().Receive(3), "job");
  EXPECT_EQ(driver_->sockets_made, 2);
  EXPECT_EQ(driver_->binds, 2);
}

// Compatibility: if the stack can bind the socket to the printer's address, the port counts as connected.
TEST_F(BluetoothPortTest, BindingCountsAsConnecting) {
  driver_->binding_connects = true;
  EXPECT_EQ(port_->Open(port_), VEXO_OK);
  EXPECT_EQ(driver_->sockets_made, 1);
  EXPECT_EQ(port_->Close(port_), VEXO_OK);
}

// Arguments of the calls to the Bluetooth stack.
struct {
  std::string socket;
  std::string bound;
  std::string connected;
} g_stack;

SOCKET WSAAPI MakeSocket(int family, int type, int protocol, WSAPROTOCOL_INFOA* info, GROUP group, DWORD flags) {
  g_stack.socket = std::to_string(family) + ' ' + std::to_string(type) + ' ' + std::to_string(protocol) + ' ' +
                   std::to_string(flags);
  return SystemFunction<decltype(WSASocketA)>("ws2_32.dll", "WSASocketA")(AF_INET, SOCK_STREAM, IPPROTO_TCP, info,
                                                                          group, flags);
}

int WSAAPI Bind(SOCKET /*socket*/, const sockaddr* address, int length) {
  g_stack.bound.assign(reinterpret_cast<const char*>(address), static_cast<size_t>(length));
  WSASetLastError(WSAEADDRNOTAVAIL);
  return SOCKET_ERROR;
}

int WSAAPI StartToConnect(SOCKET /*socket*/, const sockaddr* address, int length) {
  g_stack.connected.assign(reinterpret_cast<const char*>(address), static_cast<size_t>(length));
  return 0;
}

TEST(RealBluetoothPortTest, ConnectsToTheSerialPortService) {
  const ScopedImports imports(GetModuleHandleA(nullptr), "ws2_32.dll",
                              {{"WSASocketA", reinterpret_cast<void*>(MakeSocket)},
                               {"bind", reinterpret_cast<void*>(Bind)},
                               {"connect", reinterpret_cast<void*>(StartToConnect)}});
  VexoPort* port = nullptr;
  EXPECT_EQ(OpenPort(&port, "BT,0011aaFF22bb,0000"), VEXO_OK);
  EXPECT_EQ(port->Open(port), VEXO_OK);
  EXPECT_EQ(ClosePort(port), VEXO_ERROR_NOT_SUPPORTED_PRINTER);
  EXPECT_EQ(g_stack.socket, "32 1 3 1");
  // Family, address, service 00000003-0000-1000-8000-00805F9B34FB, channel 1; packed, little-endian.
  const std::string address(
      "\x20\0\xBB\x22\xFF\xAA\x11\0\0\0\x03\0\0\0\0\0\0\x10\x80\0\0\x80\x5F\x9B\x34\xFB\x01\0\0\0", 30);
  EXPECT_EQ(g_stack.connected, address);
  EXPECT_EQ(g_stack.bound, address.substr(0, 16));
}

TEST(RealBluetoothPortTest, ReturnsTheSystemError) {
  VexoPort* port = nullptr;
  EXPECT_EQ(OpenPort(&port, "vexo:/dev/bus/BT/DEVICE"), VEXO_ERROR_IO_SETTING);
  ASSERT_EQ(OpenPort(&port, "BT,0011AAFF22BB,0000"), VEXO_OK);
  ExpectTimeouts(port, {10, 0, 2000, 0, 2000, 2000});
  EXPECT_EQ(port->Open(port), WSAEPROTONOSUPPORT);
  EXPECT_EQ(port->Abort(port), VEXO_OK);
  EXPECT_EQ(port->Close(port), VEXO_OK);
  EXPECT_EQ(ClosePort(port), VEXO_ERROR_NOT_SUPPORTED_PRINTER);
}

}  // namespace
}  // namespace vexo::test
