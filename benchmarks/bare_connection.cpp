#include "bare_connection.h"

#include <mstcpip.h>

#include <algorithm>

namespace vexo::benchmark {
namespace {

constexpr DWORD kBufferSize = 8192;
constexpr DWORD kTimeLimitMs = 60'000;
constexpr timeval kTimeLimit = {60, 0};
constexpr timeval kNoWait = {0, 0};

template <typename T>
void SetOption(SOCKET socket, int level, int name, T value) {
  setsockopt(socket, level, name, reinterpret_cast<const char*>(&value), sizeof(value));
}

fd_set SetOf(SOCKET socket) {
  fd_set set = {};
  FD_SET(socket, &set);
  return set;
}

}  // namespace

BareConnection::BareConnection(const std::string& tcp_port)
    : socket_(WSASocketA(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0, WSA_FLAG_OVERLAPPED)) {
  SetOption<BOOL>(socket_, IPPROTO_TCP, TCP_NODELAY, TRUE);
  SetOption<DWORD>(socket_, SOL_SOCKET, SO_SNDBUF, kBufferSize);
  SetOption<DWORD>(socket_, SOL_SOCKET, SO_RCVBUF, kBufferSize);
  SetOption<BOOL>(socket_, SOL_SOCKET, SO_KEEPALIVE, TRUE);
  tcp_keepalive times = {1, 3000, 2000};
  DWORD returned = 0;
  WSAIoctl(socket_, SIO_KEEPALIVE_VALS, &times, sizeof(times), nullptr, 0, &returned, nullptr, nullptr);
  SetOption<DWORD>(socket_, SOL_SOCKET, SO_RCVTIMEO, kTimeLimitMs);
  SetOption<DWORD>(socket_, SOL_SOCKET, SO_SNDTIMEO, kTimeLimitMs);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<u_short>(std::stoi(tcp_port)));
  connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

bool BareConnection::Write(const std::vector<uint8_t>& bytes) const {
  for (size_t done = 0; done < bytes.size();) {
    fd_set writable = SetOf(socket_);
    timeval limit = kTimeLimit;
    if (select(0, nullptr, &writable, nullptr, &limit) != 1) {
      return false;
    }
    const int piece = static_cast<int>(std::min<size_t>(kBufferSize, bytes.size() - done));
    const int sent = send(socket_, reinterpret_cast<const char*>(bytes.data() + done), piece, 0);
    if (sent < 0) {
      return false;
    }
    done += static_cast<size_t>(sent);
  }
  return true;
}

bool BareConnection::Read(std::vector<uint8_t>* bytes) const {
  for (size_t done = 0; done < bytes->size();) {
    fd_set readable = SetOf(socket_);
    timeval limit = kTimeLimit;
    if (select(0, &readable, nullptr, nullptr, &limit) != 1) {
      return false;
    }
    const int missing = static_cast<int>(bytes->size() - done);
    const int received = recv(socket_, reinterpret_cast<char*>(bytes->data() + done), missing, 0);
    if (received <= 0) {
      return false;
    }
    done += static_cast<size_t>(received);
  }
  return true;
}

bool BareConnection::IsAlive() const {
  fd_set exceptional = SetOf(socket_);
  fd_set readable = SetOf(socket_);
  timeval no_wait = kNoWait;
  return select(0, &readable, nullptr, &exceptional, &no_wait) == 0;
}

}  // namespace vexo::benchmark
