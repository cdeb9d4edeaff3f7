// Owning types for Winsock: the library's use of it, and its sockets.
#ifndef VEXO_PLATFORM_WINDOWS_WINSOCK_H_
#define VEXO_PLATFORM_WINDOWS_WINSOCK_H_

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <utility>

#include "platform/windows/guarded_handle.h"

namespace vexo::platform {

// Winsock counts its users. Not every system lets several threads change that count at once: under Wine a count may get
// lost, and when it is down to nothing all sockets of the process are closed.
inline SRWLOCK winsock_count_lock = SRWLOCK_INIT;

class WinsockCountGuard {
 public:
  WinsockCountGuard() { AcquireSRWLockExclusive(&winsock_count_lock); }
  WinsockCountGuard(const WinsockCountGuard&) = delete;
  WinsockCountGuard& operator=(const WinsockCountGuard&) = delete;
  ~WinsockCountGuard() { ReleaseSRWLockExclusive(&winsock_count_lock); }
};

// One WSAStartup with its WSACleanup.
class WinsockUse {
 public:
  WinsockUse() = default;
  WinsockUse(const WinsockUse&) = delete;
  WinsockUse& operator=(const WinsockUse&) = delete;
  ~WinsockUse() { Stop(); }

  // 0, or the Winsock error code. Starting twice changes nothing.
  int Start() {
    const WinsockCountGuard guard;
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
    const WinsockCountGuard guard;
    if (std::exchange(started_, false)) {
      WSACleanup();
    }
  }

 private:
  bool started_ = false;
};

struct SocketTraits {
  using Handle = SOCKET;
  static constexpr Handle kNone = INVALID_SOCKET;

  static void Interrupt(Handle /*socket*/) {}  // Shutting it down has done that.
  static void Close(Handle socket) { closesocket(socket); }
};

class ScopedSocket : public GuardedHandle<SocketTraits> {
 public:
  // Closes the socket. `how`: SD_RECEIVE or SD_BOTH, which directions are ended before.
  void ShutDown(int how) { ShutDown(Exchange(INVALID_SOCKET), how); }

  // Closes a socket that this object has owned.
  void ShutDown(SOCKET old, int how) const {
    if (old != INVALID_SOCKET) {
      shutdown(old, how);
      Close(old);
    }
  }
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_WINSOCK_H_
