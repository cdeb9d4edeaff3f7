// Owning types for Winsock: the library's use of it, and its sockets.
#ifndef VEXO_PLATFORM_WINDOWS_WINSOCK_H_
#define VEXO_PLATFORM_WINDOWS_WINSOCK_H_

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <atomic>
#include <utility>

namespace vexo::platform {

// One WSAStartup with its WSACleanup.
class WinsockUse {
 public:
  WinsockUse() = default;
  WinsockUse(const WinsockUse&) = delete;
  WinsockUse& operator=(const WinsockUse&) = delete;
  ~WinsockUse() { Stop(); }

  // 0, or the Winsock error code. Starting twice changes nothing.
  int Start() {
    if (started_) {
      return 0;
    }
    WSADATA data = {};
    const int failure = WSAStartup(MAKEWORD(2, 2), &data);
    if (failure != 0) {
      const int error = WSAGetLastError();
      return error != 0 ? error : failure;
    }
    started_ = true;
    return 0;
  }

  void Stop() {
    if (std::exchange(started_, false)) {
      WSACleanup();
    }
  }

 private:
  bool started_ = false;
};

// The handle is atomic: a job monitor reads on one thread while another one writes, and a write may replace the socket.
// Whoever reads a moment too late gets Winsock's word that the socket is gone.
class ScopedSocket {
 public:
  ScopedSocket() = default;
  explicit ScopedSocket(SOCKET handle) : handle_(handle) {}
  ScopedSocket(const ScopedSocket&) = delete;
  ScopedSocket& operator=(const ScopedSocket&) = delete;
  ~ScopedSocket() { Reset(INVALID_SOCKET); }

  bool valid() const { return handle_ != INVALID_SOCKET; }
  SOCKET get() const { return handle_; }

  // Closes the socket and owns another one.
  void Reset(SOCKET handle) {
    const SOCKET old = handle_.exchange(handle);
    if (old != INVALID_SOCKET) {
      closesocket(old);
    }
  }

  // `how`: SD_RECEIVE or SD_BOTH, which directions are ended before the socket is closed.
  void ShutDown(int how) {
    if (valid()) {
      shutdown(handle_, how);
      Reset(INVALID_SOCKET);
    }
  }

 private:
  std::atomic<SOCKET> handle_{INVALID_SOCKET};
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_WINSOCK_H_
