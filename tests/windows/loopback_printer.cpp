#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace vexo::test {
namespace {

bool AwaitReadable(const Socket& socket, long seconds = 30) {
  fd_set set = {};
  timeval limit = {seconds, 0};
  FD_SET(socket.get(), &set);
  return select(0, &set, nullptr, nullptr, &limit) == 1;
}

sockaddr_in AddressOf(const std::string& ip, uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(ip.c_str());
  address.sin_port = htons(port);
  return address;
}

}  // namespace

std::string Connection::Receive(size_t length) {
  std::string received;
  std::vector<char> piece(64 * 1024);
  while (received.size() < length && AwaitReadable(socket_)) {
    const size_t wanted = std::min(piece.size(), length - received.size());
    const int count = recv(socket_.get(), piece.data(), static_cast<int>(wanted), 0);
    if (count <= 0) {
      break;
    }
    received.append(piece.data(), static_cast<size_t>(count));
  }
  return received;
}

void Connection::Send(const std::string& bytes) {
  EXPECT_EQ(send(socket_.get(), bytes.data(), static_cast<int>(bytes.size()), 0), static_cast<int>(bytes.size()));
}

void Connection::Reset() {
  const linger hard = {1, 0};
  setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof(hard));
  Close();
}

std::string OwnIp(const std::string& network) {
  const DWORD process = GetCurrentProcessId();
  return network + '.' + std::to_string(process / 4 % 250) + '.' + std::to_string(process % 4 + 1);
}

LoopbackPrinter::LoopbackPrinter(PrinterState state, const std::string& ip, uint16_t port) : ip_(ip) {
  WSADATA data = {};
  EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
  listener_ = Socket(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  sockaddr_in address = AddressOf(ip, port);
  EXPECT_EQ(bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0) << WSAGetLastError();
  int size = sizeof(address);
  getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
  port_ = ntohs(address.sin_port);
  if (state == PrinterState::kListening) {
    EXPECT_EQ(listen(listener_.get(), 5), 0);
  }
}

LoopbackPrinter::~LoopbackPrinter() {
  listener_.Close();
  WSACleanup();
}

Connection LoopbackPrinter::Accept() {
  EXPECT_TRUE(AwaitReadable(listener_)) << "no host connects";
  return Connection(Socket(accept(listener_.get(), nullptr, nullptr)));
}

void LoopbackPrinter::Listen() {
  const BOOL again = TRUE;
  const sockaddr_in address = AddressOf(ip_, port_);
  listener_ = Socket(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  setsockopt(listener_.get(), SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&again), sizeof(again));
  EXPECT_EQ(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  EXPECT_EQ(listen(listener_.get(), 5), 0) << WSAGetLastError();
}

bool LoopbackPrinter::HasPendingConnection() const { return AwaitReadable(listener_, 0); }

void LoopbackPrinter::ConnectOnce() const {
  const Socket host(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
  const sockaddr_in address = AddressOf(ip_, port_);
  EXPECT_EQ(connect(host.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0) << WSAGetLastError();
}

}  // namespace vexo::test
