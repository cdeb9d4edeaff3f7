#include "port/socket/socket_port.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/clock.h"
#include "port/transfer_pacing.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr int kConnectAttempts = 2;
constexpr uint32_t kLookForCloseMs = 20;
constexpr uint32_t kDefaultPiece = 4096;  // For a kind of socket that leaves its buffers to the system.

using platform::AwaitSocket;
using platform::kNoSocket;
using platform::kSocketFailure;
using platform::LastSocketError;
using platform::Socket;
using platform::SocketEvents;

int AwaitReadable(Socket socket, int64_t limit_ms) {
  SocketEvents readable = {true, false, false};
  return AwaitSocket(socket, &readable, limit_ms);
}

int AwaitReadableOrException(Socket socket, int64_t limit_ms) {
  SocketEvents events = {true, false, true};
  return AwaitSocket(socket, &events, limit_ms);
}

int AwaitWritable(Socket socket, int64_t limit_ms) {
  SocketEvents writable = {false, true, false};
  return AwaitSocket(socket, &writable, limit_ms);
}

}  // namespace

// One call to the system on the socket of an opening; kNoSocket when that is over. The socket is looked at before
// the opening is: one that another opening has put in place is never used.
class SocketPort::Use {
 public:
  Use(const SocketPort& port, Opening opening) : use_(port.socket_), over_(port.IsOver(opening)) {}

  Socket get() const { return over_ ? kNoSocket : use_.get(); }

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
    return left_ > 0;
  }

  int64_t limit() const { return limited_ ? int64_t{left_} : platform::kNoLimit; }

 private:
  const bool limited_;
  uint32_t left_;
  uint32_t last_step_;
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
    library_.Stop();
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
  const int start_error = library_.Start();
  if (start_error != 0) {
    return start_error;
  }
  address_ = Address();
  int32_t result = MakeSocket(opening);
  if (result == VEXO_OK) {
    result = Connect(opening);
  }
  return EndOpening(opening, result);
}

int32_t SocketPort::Close() {
  Socket socket = kNoSocket;
  {
    const std::lock_guard<platform::Mutex> guard(replacing_);
    ++opening_;
    is_open_ = false;
    has_socket_ = false;
    socket = socket_.Exchange(kNoSocket);
  }
  socket_.ShutDown(socket, platform::Direction::kReceive);
  library_.Stop();
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
  if (use.get() != kNoSocket) {
    SetTransferTimeouts(use.get());
  }
  return VEXO_OK;
}

// The transfers do not depend on these options, so their failure does not matter.
void SocketPort::SetTransferTimeouts(Socket socket) const {
  platform::SetReceiveTimeout(socket, timeouts().readConstant);
  platform::SetSendTimeout(socket, timeouts().writeConstant);
}

// The old socket is shut down. When the opening is over, it is the new one that is closed, and nothing has changed.
bool SocketPort::PutInPlace(Opening opening, Socket socket) {
  bool over = false;
  Socket old = socket;
  {
    const std::lock_guard<platform::Mutex> guard(replacing_);
    over = IsOver(opening);
    if (!over) {
      old = socket_.Exchange(socket);
      has_socket_ = has_socket_ || socket != kNoSocket;
    }
  }
  socket_.ShutDown(old, platform::Direction::kBoth);
  return !over;
}

void SocketPort::DropSocket(Opening opening) {
  PutInPlace(opening, kNoSocket);
  const std::lock_guard<platform::Mutex> guard(replacing_);
  has_socket_ = has_socket_ && IsOver(opening);
}

// Options that failed leave the socket made.
int32_t SocketPort::MakeSocket(Opening opening) {
  const Socket socket = CreateSocket();
  if (socket == kNoSocket) {
    const int error = LastSocketError();
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
    PutInPlace(opening, kNoSocket);
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

int SocketPort::StartConnect(Socket socket, const platform::SocketAddress& address) {
  return platform::StartConnect(socket, address);
}

bool SocketPort::IsConnectedByBinding(Socket /*socket*/, const platform::SocketAddress& /*address*/) { return false; }

int32_t SocketPort::ConnectOnce(Opening opening) {
  if (IsConnectedByBinding(Use(*this, opening).get(), address_)) {
    return VEXO_OK;
  }
  if (!platform::SetBlocking(Use(*this, opening).get(), false)) {
    return LastSocketError();
  }
  const int32_t result = AwaitConnection(opening);
  platform::SetBlocking(Use(*this, opening).get(), true);
  return result;
}

// A printer that refuses the connection, perhaps because it serves another host just now, gets the whole time and is
// reported as not answering. So does one that no network leads to at this moment, though its socket is not even
// connecting then: the second attempt may find the cable plugged in again.
int32_t SocketPort::AwaitConnection(Opening opening) {
  if (StartConnect(Use(*this, opening).get(), address_) == 0) {
    return VEXO_OK;
  }
  const uint32_t limit_ms = timeouts().connect;
  const uint32_t started = platform::TickCount();
  switch (platform::AwaitConnection(socket_.get(), limit_ms)) {
    case platform::Connecting::kConnected:
      return platform::PendingError(Use(*this, opening).get());
    case platform::Connecting::kSystemFailure:
      return LastSocketError();
    case platform::Connecting::kRefused:
      while (!IsOver(opening) && platform::TickCount() - started < limit_ms) {
        platform::RestMs(kLookForCloseMs);
      }
      break;
    case platform::Connecting::kGoesOn:
      break;
  }
  return VEXO_ERROR_IO_OPEN_FAILED;
}

// Connecting the old socket again would report success and lose the job, so the first attempt needs a fresh one, too.
// A port that another thread has closed looks like a dropped connection, and must not be connected again.
int32_t SocketPort::Reconnect(Opening opening) {
  PutInPlace(opening, kNoSocket);
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
  const Socket socket = use.get();
  if (socket == kNoSocket) {
    return true;
  }
  SocketEvents events = {true, true, true};
  if (AwaitSocket(socket, &events, 0) == kSocketFailure) {
    return true;
  }
  *writable = events.writable;
  if (events.exceptional) {
    return platform::PendingError(socket) != 0;
  }
  return events.readable && !platform::HasBytes(socket);
}

int32_t SocketPort::Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  const Opening opening = opening_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  if (length == 0 || IsAborted()) {
    return VEXO_OK;
  }
  platform::ClearSocketError();
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
      return room == 0 ? VEXO_ERROR_IO_WRITE_TIMEOUT : LastSocketError();
    }
    const uint32_t piece = std::min(largest_piece, length - *written);
    const int sent = platform::Send(Use(*this, opening).get(), bytes + *written, piece);
    if (sent >= 0) {
      *written += static_cast<uint32_t>(sent);
      retried_error = VEXO_OK;
      continue;
    }
    const int error = LastSocketError();
    if (error == 0 || error == platform::kSocketTimedOut) {
      retried_error = error;
      continue;
    }
    if (error != platform::kSocketReset || std::exchange(reconnected, true)) {
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
  int64_t limit = budget != 0 ? budget : platform::kNoLimit;
  while (*read < length && !IsAborted()) {
    const int readable = AwaitReadableOrException(socket_.get(), limit);
    if (readable <= 0) {
      return readable == 0 ? VEXO_ERROR_IO_READ_TIMEOUT : LastSocketError();
    }
    const int received = platform::Receive(Use(*this, opening).get(), bytes + *read, length - *read);
    if (received == kSocketFailure) {
      return LastSocketError();
    }
    if (received == 0) {
      return Reconnect(opening);
    }
    *read += static_cast<uint32_t>(received);
    limit = budget != 0 ? timeouts().readInterval : platform::kNoLimit;
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
  platform::ClearSocketError();
  const Use use(*this, opening);
  const int readable = AwaitReadable(use.get(), 0);
  if (readable == 0) {
    return VEXO_OK;
  }
  const int received = readable > 0 ? platform::Receive(use.get(), buffer + from, to - from) : kSocketFailure;
  if (received == kSocketFailure) {
    return Judge(opening, LastSocketError());
  }
  *read = static_cast<uint32_t>(received);
  return VEXO_OK;
}

}  // namespace vexo
