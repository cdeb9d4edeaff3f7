#include "port/socket_port.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

#include "platform/clock.h"
#include "port/transfer_pacing.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr int kConnectAttempts = 2;
constexpr uint32_t kDefaultPiece = 4096;  // For a kind of socket that leaves its buffers to the system.
constexpr timeval kNoWait = {0, 0};

timeval ToTimeval(uint32_t milliseconds) {
  return {static_cast<long>(milliseconds / 1000), static_cast<long>(milliseconds % 1000) * 1000};
}

// A set of one socket for select.
struct SocketSet {
  explicit SocketSet(SOCKET socket) { FD_SET(socket, &set); }

  fd_set set = {};
};

// select on one socket. A null limit waits without end.
int Await(fd_set* readable, fd_set* writable, fd_set* exceptional, const timeval* limit) {
  timeval copy = limit != nullptr ? *limit : timeval{};  // Some systems' select takes the limit as its own.
  return select(0, readable, writable, exceptional, limit != nullptr ? &copy : nullptr);
}

int AwaitReadable(SOCKET socket, const timeval* limit) {
  SocketSet readable(socket);
  return Await(&readable.set, nullptr, nullptr, limit);
}

int AwaitReadableOrException(SOCKET socket, const timeval* limit) {
  SocketSet readable(socket);
  SocketSet exceptional(socket);
  return Await(&readable.set, nullptr, &exceptional.set, limit);
}

int AwaitWritable(SOCKET socket, const timeval* limit) {
  SocketSet writable(socket);
  return Await(nullptr, &writable.set, nullptr, limit);
}

// What one look at a socket shows, without waiting.
struct Look {
  bool failed = false;
  bool exceptional = false;
  bool readable = false;
  bool writable = false;
};

Look LookAt(SOCKET socket) {
  SocketSet readable(socket);
  SocketSet writable(socket);
  SocketSet exceptional(socket);
  Look look;
  look.failed = Await(&readable.set, &writable.set, &exceptional.set, &kNoWait) == SOCKET_ERROR;
  look.exceptional = FD_ISSET(socket, &exceptional.set) != 0;
  look.readable = FD_ISSET(socket, &readable.set) != 0;
  look.writable = FD_ISSET(socket, &writable.set) != 0;
  return look;
}

// The error that the system has noted for the socket, 0 for none.
int PendingError(SOCKET socket) {
  int error = 0;
  int size = sizeof(error);
  if (getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == SOCKET_ERROR) {
    return WSAGetLastError();
  }
  return error;
}

int SetBlocking(SOCKET socket, bool blocking) {
  u_long non_blocking = blocking ? 0 : 1;
  return ioctlsocket(socket, static_cast<long>(FIONBIO), &non_blocking);
}

int ToInt(uint32_t length) { return static_cast<int>(std::min<uint32_t>(length, std::numeric_limits<int>::max())); }

int Receive(SOCKET socket, uint8_t* bytes, uint32_t length) {
  return recv(socket, reinterpret_cast<char*>(bytes), ToInt(length), 0);
}

}  // namespace

// One call to the system on the socket of an opening; INVALID_SOCKET when that is over. The socket is looked at before
// the opening is: one that another opening has put in place is never used.
class SocketPort::Use {
 public:
  Use(const SocketPort& port, Opening opening) : use_(port.socket_), over_(port.IsOver(opening)) {}

  SOCKET get() const { return over_ ? INVALID_SOCKET : use_.get(); }

 private:
  const platform::ScopedSocket::Use use_;
  const bool over_;
};

// The time left to a Write; a budget of 0 means no limit.
class SocketPort::WriteBudget {
 public:
  explicit WriteBudget(uint32_t milliseconds)
      : limited_(milliseconds != 0), left_(milliseconds), last_step_(platform::TickCount()) {}

  // Charges the time since the last step. False: nothing is left.
  bool Step() {
    if (!limited_) {
      return true;
    }
    const uint32_t now = platform::TickCount();
    const uint32_t elapsed = now - last_step_;
    last_step_ = now;
    left_ -= std::min(elapsed, left_);
    limit_ = ToTimeval(left_);
    return left_ > 0;
  }

  const timeval* limit() const { return limited_ ? &limit_ : nullptr; }

 private:
  const bool limited_;
  uint32_t left_;
  uint32_t last_step_;
  timeval limit_ = {};
};

SocketPort::Opening SocketPort::BeginOpening() {
  const std::lock_guard<platform::Mutex> guard(replacing_);
  return ++opening_;
}

int32_t SocketPort::EndOpening(Opening opening, int32_t result) {
  const std::lock_guard<platform::Mutex> guard(replacing_);
  if (IsOver(opening)) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  is_open_ = result == VEXO_OK;
  if (!socket_.valid()) {
    winsock_.Stop();
  }
  return result;
}

// What a step has met after its opening was over comes of that.
int32_t SocketPort::Judge(Opening opening, int32_t result) const {
  return result != VEXO_OK && IsOver(opening) ? VEXO_ERROR_IO_NOT_OPEN : result;
}

int32_t SocketPort::Open() {
  if (!configured()) {
    return VEXO_ERROR_IO_SETTING;
  }
  if (is_open_) {
    return VEXO_ERROR_IO_ALREADY_OPEN;
  }
  Close();  // An Open that failed half-way may have left its socket made.
  const Opening opening = BeginOpening();
  const int start_error = winsock_.Start();
  if (start_error != 0) {
    return start_error;
  }
  SetAddress();
  int32_t result = MakeSocket(opening);
  if (result == VEXO_OK) {
    result = Connect(opening);
  }
  return EndOpening(opening, result);
}

int32_t SocketPort::Close() {
  SOCKET socket = INVALID_SOCKET;
  {
    const std::lock_guard<platform::Mutex> guard(replacing_);
    ++opening_;
    is_open_ = false;
    has_socket_ = false;
    socket = socket_.Exchange(INVALID_SOCKET);
  }
  socket_.ShutDown(socket, SD_RECEIVE);
  winsock_.Stop();
  return VEXO_OK;
}

int32_t SocketPort::Abort() {
  if (has_socket_) {
    SetAborted();
  }
  return VEXO_OK;
}

int32_t SocketPort::SetTimeouts(const VexoPortTimeouts& timeouts) {
  DevicePort::SetTimeouts(timeouts);
  const platform::ScopedSocket::Use use(socket_);
  if (use.get() != INVALID_SOCKET) {
    SetTransferTimeouts(use.get());
  }
  return VEXO_OK;
}

// The transfers do not depend on these options, so their failure does not matter.
void SocketPort::SetTransferTimeouts(SOCKET socket) const {
  const DWORD receive_ms = timeouts().readConstant;
  const DWORD send_ms = timeouts().writeConstant;
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&receive_ms), sizeof(receive_ms));
  setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&send_ms), sizeof(send_ms));
}

// The old socket is shut down. When the opening is over, it is the new one that is closed, and nothing has changed.
bool SocketPort::PutInPlace(Opening opening, SOCKET socket) {
  bool over = false;
  SOCKET old = socket;
  {
    const std::lock_guard<platform::Mutex> guard(replacing_);
    over = IsOver(opening);
    if (!over) {
      old = socket_.Exchange(socket);
      has_socket_ = has_socket_ || socket != INVALID_SOCKET;
    }
  }
  socket_.ShutDown(old, SD_BOTH);
  return !over;
}

void SocketPort::DropSocket(Opening opening) {
  PutInPlace(opening, INVALID_SOCKET);
  const std::lock_guard<platform::Mutex> guard(replacing_);
  has_socket_ = has_socket_ && IsOver(opening);
}

// Options that failed leave the socket made.
int32_t SocketPort::MakeSocket(Opening opening) {
  const SOCKET socket = CreateSocket();
  if (socket == INVALID_SOCKET) {
    const int error = WSAGetLastError();
    DropSocket(opening);
    return error;
  }
  const int32_t result = SetOptions(socket);
  return PutInPlace(opening, socket) ? result : VEXO_ERROR_IO_NOT_OPEN;
}

// A failed attempt spoils its socket, so the second one starts with a fresh one. After the last, none is left: what
// looks like a connection must be one.
int32_t SocketPort::Connect(Opening opening) {
  for (int attempt = 1;; ++attempt) {
    int32_t result = ConnectOnce(opening);
    if (result == VEXO_OK) {
      return VEXO_OK;
    }
    PutInPlace(opening, INVALID_SOCKET);
    if (attempt < kConnectAttempts && !IsOver(opening)) {
      result = MakeSocket(opening);
      if (result == VEXO_OK) {
        continue;
      }
    }
    DropSocket(opening);
    return Judge(opening, result);
  }
}

bool SocketPort::IsConnectedByBinding(SOCKET /*socket*/) { return false; }

int32_t SocketPort::ConnectOnce(Opening opening) {
  if (IsConnectedByBinding(Use(*this, opening).get())) {
    return VEXO_OK;
  }
  if (SetBlocking(Use(*this, opening).get(), false) == SOCKET_ERROR) {
    return WSAGetLastError();
  }
  const int32_t result = AwaitConnection(opening);
  SetBlocking(Use(*this, opening).get(), true);
  return result;
}

// Only "writable" is waited for: a printer that refuses the connection, perhaps because it serves another host just
// now, gets the whole time and is reported as not answering. So does one that no network leads to at this moment,
// though its socket is not even connecting then: the second attempt may find the cable plugged in again.
int32_t SocketPort::AwaitConnection(Opening opening) {
  if (StartConnect(Use(*this, opening).get()) == 0) {
    return VEXO_OK;
  }
  const timeval limit = ToTimeval(timeouts().connect);
  switch (AwaitWritable(socket_.get(), &limit)) {
    case SOCKET_ERROR:
      return WSAGetLastError();
    case 0:
      return VEXO_ERROR_IO_OPEN_FAILED;
    default:
      return PendingError(Use(*this, opening).get());
  }
}

// Connecting the old socket again would report success and lose the job, so the first attempt needs a fresh one, too.
// A port that another thread has closed looks like a dropped connection, and must not be connected again.
int32_t SocketPort::Reconnect(Opening opening) {
  PutInPlace(opening, INVALID_SOCKET);
  const int32_t result = MakeSocket(opening);
  if (result != VEXO_OK) {
    DropSocket(opening);
    return Judge(opening, result);
  }
  return Connect(opening);
}

// Looks without waiting, once for all that matters: a look costs as much as sending a small piece. Printers drop idle
// connections; the drop shows as an error, or as an end of the data.
bool SocketPort::IsDropped(Opening opening, bool* writable) const {
  *writable = false;
  const Use use(*this, opening);
  const SOCKET socket = use.get();
  if (socket == INVALID_SOCKET) {
    return true;
  }
  const Look look = LookAt(socket);
  *writable = look.writable;
  if (look.failed) {
    return true;
  }
  if (look.exceptional) {
    return PendingError(socket) != 0;
  }
  char byte = 0;
  return look.readable && recv(socket, &byte, 1, MSG_PEEK) <= 0;
}

int32_t SocketPort::Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  const Opening opening = opening_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  if (length == 0 || IsAborted()) {
    return VEXO_OK;
  }
  WSASetLastError(0);
  bool writable = false;
  if (IsDropped(opening, &writable)) {
    writable = false;
    const int32_t result = Reconnect(opening);
    if (result != VEXO_OK) {
      return result;
    }
  }
  return Judge(opening, WriteAll(opening, writable, buffer + offset, length, written));
}

// `writable`: whether the first piece needs no waiting.
int32_t SocketPort::WriteAll(Opening opening, bool writable, const uint8_t* bytes, uint32_t length, uint32_t* written) {
  const uint32_t largest_piece = buffer_size_ != 0 ? buffer_size_ : kDefaultPiece;
  WriteBudget budget(TransferBudget(timeouts().writeMultiplier, length, timeouts().writeConstant));
  bool reconnected = false;
  int32_t retried_error = VEXO_OK;
  while (*written < length && !IsAborted()) {
    if (!budget.Step()) {
      return retried_error;
    }
    const int room = std::exchange(writable, false) ? 1 : AwaitWritable(socket_.get(), budget.limit());
    if (room <= 0) {
      return room == 0 ? VEXO_ERROR_IO_WRITE_TIMEOUT : WSAGetLastError();
    }
    const uint32_t piece = std::min(largest_piece, length - *written);
    const int sent = send(Use(*this, opening).get(), reinterpret_cast<const char*>(bytes + *written), ToInt(piece), 0);
    if (sent >= 0) {
      *written += static_cast<uint32_t>(sent);
      retried_error = VEXO_OK;
      continue;
    }
    const int error = WSAGetLastError();
    if (error == 0 || error == WSAETIMEDOUT) {
      retried_error = error;
      continue;
    }
    if (error != WSAECONNRESET || std::exchange(reconnected, true)) {
      return error;
    }
    const int32_t result = Reconnect(opening);
    if (result != VEXO_OK) {
      return result;
    }
  }
  return VEXO_OK;
}

int32_t SocketPort::Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  const Opening opening = opening_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  return length == 0 ? VEXO_OK : Judge(opening, ReadAll(opening, buffer + offset, length, read));
}

// After a reconnect that failed there is no socket, and select says so.
int32_t SocketPort::ReadAll(Opening opening, uint8_t* bytes, uint32_t length, uint32_t* read) {
  const uint32_t budget = TransferBudget(timeouts().readMultiplier, length, timeouts().readConstant);
  timeval wait = ToTimeval(budget);
  const timeval* const limit = budget != 0 ? &wait : nullptr;
  while (*read < length && !IsAborted()) {
    const int readable = AwaitReadableOrException(socket_.get(), limit);
    if (readable <= 0) {
      return readable == 0 ? VEXO_ERROR_IO_READ_TIMEOUT : WSAGetLastError();
    }
    const int received = Receive(Use(*this, opening).get(), bytes + *read, length - *read);
    if (received == SOCKET_ERROR) {
      return WSAGetLastError();
    }
    if (received == 0) {
      return Reconnect(opening);
    }
    *read += static_cast<uint32_t>(received);
    wait = ToTimeval(timeouts().readInterval);
  }
  return VEXO_OK;
}

int32_t SocketPort::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  const Opening opening = opening_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  if (from > to) {
    return VEXO_ERROR_PARAMETER;
  }
  WSASetLastError(0);
  const Use use(*this, opening);
  const int readable = AwaitReadable(use.get(), &kNoWait);
  if (readable == 0) {
    return VEXO_OK;
  }
  const int received = readable > 0 ? Receive(use.get(), buffer + from, to - from) : SOCKET_ERROR;
  if (received == SOCKET_ERROR) {
    return Judge(opening, WSAGetLastError());
  }
  *read = static_cast<uint32_t>(received);
  return VEXO_OK;
}

}  // namespace vexo
