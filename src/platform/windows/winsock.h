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
  void Reset(SOCKET handle) { Close(handle_.exchange(handle)); }

  // `how`: SD_RECEIVE or SD_BOTH, which directions are ended before the socket is closed.
  void ShutDown(int how) {
    const SOCKET old = handle_.exchange(INVALID_SOCKET);
    if (old != INVALID_SOCKET) {
      shutdown(old, how);
      Close(old);
    }
  }

  // A call on a socket that other threads may close. A job monitor reads on one thread while another one writes, and a
  // write may replace the socket. The number of a closed socket goes to whoever makes the next one, of another printer
  // perhaps, and a thread that was a moment too late would take that printer's bytes: so closing waits for the calls
  // under way. A call that comes later has no socket, and gets Winsock's word for it.
  class Use {
   public:
    explicit Use(const ScopedSocket& socket) : uses_(&socket.uses_) {
      ++*uses_;
      handle_ = socket.handle_;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { --*uses_; }

    SOCKET get() const { return handle_; }

   private:
    std::atomic<int>* const uses_;
    SOCKET handle_;
  };

 private:
  // A call that blocks all the same, when another thread has taken what it was to read, ends by being closed under.
  void Close(SOCKET old) const {
    constexpr ULONGLONG kPatienceMs = 5000;
    if (old != INVALID_SOCKET) {
      for (const ULONGLONG start = GetTickCount64(); uses_ != 0 && GetTickCount64() - start < kPatienceMs;) {
        Sleep(1);
      }
      closesocket(old);
    }
  }

  std::atomic<SOCKET> handle_{INVALID_SOCKET};
  mutable std::atomic<int> uses_{0};
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_WINSOCK_H_
