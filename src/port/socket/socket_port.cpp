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
constexpr uint32_t kCloseCheckIntervalMs = 20;
constexpr uint32_t kDefaultPiece = 4096;  // For a kind of socket without a buffer size of its own.

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

// The scope of one system call on the socket of a generation; kNoSocket once the generation has ended. Reads the socket
// before the generation, so it never uses a socket that a later Open has put in place.
class SocketPort::Use {
 public:
  Use(const SocketPort& port, Generation generation) : use_(port.socket_), ended_(port.HasEnded(generation)) {}

  Socket get() const { return ended_ ? kNoSocket : use_.get(); }

 private:
  const platform::ScopedSocket::Use use_;
  const bool ended_;
};

// The remaining time of a Write. A budget of 0 means no limit.
class SocketPort::WriteBudget {
 public:
  explicit WriteBudget(uint32_t milliseconds)
      : limited_(milliseconds != 0), left_(milliseconds), last_step_(platform::TickCount()) {}

  // Subtracts the time since the last step. Returns false when nothing is left.
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

SocketPort::Generation SocketPort::BeginOpen() {
  const std::lock_guard<platform::Mutex> guard(replace_mutex_);
  return ++generation_;
}

int32_t SocketPort::FinishOpen(Generation generation, int32_t result) {
  const std::lock_guard<platform::Mutex> guard(replace_mutex_);
  if (HasEnded(generation)) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  is_open_ = result == VEXO_OK;
  if (!socket_.valid()) {
    library_.Stop();
  }
  return result;
}

// A failure after the end of the generation is a consequence of the Close and is reported as such.
int32_t SocketPort::ResultOrNotOpen(Generation generation, int32_t result) const {
  return result != VEXO_OK && HasEnded(generation) ? VEXO_ERROR_IO_NOT_OPEN : result;
}

int32_t SocketPort::Open() {
  if (!configured()) {
    return VEXO_ERROR_IO_SETTING;
  }
  if (is_open_) {
    return VEXO_ERROR_IO_ALREADY_OPEN;
  }
  Close();  // A failed Open may have left its socket.
  const Generation generation = BeginOpen();
  const int start_error = library_.Start();
  if (start_error != 0) {
    return start_error;
  }
  address_ = Address();
  int32_t result = MakeSocket(generation);
  if (result == VEXO_OK) {
    result = Connect(generation);
  }
  return FinishOpen(generation, result);
}

int32_t SocketPort::Close() {
  Socket socket = kNoSocket;
  {
    const std::lock_guard<platform::Mutex> guard(replace_mutex_);
    ++generation_;
    is_open_ = false;
    has_socket_ = false;
    socket = socket_.Exchange(kNoSocket);
  }
  socket_.ShutDown(socket, platform::Direction::kReceive);
  library_.Stop();
  return VEXO_OK;
}

// Compatibility: returns VEXO_OK even without an effect, unlike the abort of a device file.
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

// Failures are ignored: transfers do not depend on these options.
void SocketPort::SetTransferTimeouts(Socket socket) const {
  platform::SetReceiveTimeout(socket, timeouts().readConstant);
  platform::SetSendTimeout(socket, timeouts().writeConstant);
}

// Shuts down and closes the old socket. If the generation has ended, closes the new one instead, changes nothing and
// returns false.
bool SocketPort::ReplaceSocket(Generation generation, Socket socket) {
  bool ended = false;
  Socket old = socket;
  {
    const std::lock_guard<platform::Mutex> guard(replace_mutex_);
    ended = HasEnded(generation);
    if (!ended) {
      old = socket_.Exchange(socket);
      has_socket_ = has_socket_ || socket != kNoSocket;
    }
  }
  socket_.ShutDown(old, platform::Direction::kBoth);
  return !ended;
}

void SocketPort::DropSocket(Generation generation) {
  ReplaceSocket(generation, kNoSocket);
  const std::lock_guard<platform::Mutex> guard(replace_mutex_);
  has_socket_ = has_socket_ && HasEnded(generation);
}

// The socket stays in place even if an option fails.
int32_t SocketPort::MakeSocket(Generation generation) {
  const Socket socket = CreateSocket();
  if (socket == kNoSocket) {
    return LastSocketError();
  }
  const int32_t result = SetOptions(socket);
  return ReplaceSocket(generation, socket) ? result : VEXO_ERROR_IO_NOT_OPEN;
}

// A socket cannot be used again after a failed attempt, so the second attempt starts with a fresh one. After the last
// attempt none is left, so that a socket always means a connection.
int32_t SocketPort::Connect(Generation generation) {
  for (int attempt = 1;; ++attempt) {
    int32_t result = ConnectOnce(generation);
    if (result == VEXO_OK) {
      return VEXO_OK;
    }
    ReplaceSocket(generation, kNoSocket);
    if (attempt < kConnectAttempts && !HasEnded(generation)) {
      result = MakeSocket(generation);
      if (result == VEXO_OK) {
        continue;
      }
    }
    DropSocket(generation);
    return ResultOrNotOpen(generation, result);
  }
}

int SocketPort::StartConnect(Socket socket, const platform::SocketAddress& address) {
  return platform::StartConnect(socket, address);
}

bool SocketPort::IsConnectedByBinding(Socket /*socket*/, const platform::SocketAddress& /*address*/) { return false; }

int32_t SocketPort::ConnectOnce(Generation generation) {
  if (IsConnectedByBinding(Use(*this, generation).get(), address_)) {
    return VEXO_OK;
  }
  if (!platform::SetBlocking(Use(*this, generation).get(), false)) {
    return LastSocketError();
  }
  const int32_t result = AwaitConnection(generation);
  platform::SetBlocking(Use(*this, generation).get(), true);
  return result;
}

// Compatibility: a printer that refuses the connection, perhaps because it is serving another host, uses up the whole
// time and is reported as not answering. The same goes for an unreachable network, where the socket is not even
// connecting: the cable may be plugged in again by the second attempt.
int32_t SocketPort::AwaitConnection(Generation generation) {
  if (StartConnect(Use(*this, generation).get(), address_) == 0) {
    return VEXO_OK;
  }
  const uint32_t limit_ms = timeouts().connect;
  const uint32_t started = platform::TickCount();
  switch (platform::AwaitConnection(socket_.get(), limit_ms)) {
    case platform::Connecting::kConnected:
      return platform::PendingError(Use(*this, generation).get());
    case platform::Connecting::kSystemFailure:
      return LastSocketError();
    case platform::Connecting::kRefused:
      while (!HasEnded(generation) && platform::TickCount() - started < limit_ms) {
        platform::RestMs(kCloseCheckIntervalMs);
      }
      break;
    case platform::Connecting::kGoesOn:
      break;
  }
  return VEXO_ERROR_IO_OPEN_FAILED;
}

// Connecting the old socket again would report success and lose the job, so even the first attempt needs a fresh one. A
// port closed by another thread looks like a dropped connection, but must not reconnect.
int32_t SocketPort::Reconnect(Generation generation) {
  ReplaceSocket(generation, kNoSocket);
  const int32_t result = MakeSocket(generation);
  if (result != VEXO_OK) {
    DropSocket(generation);
    return ResultOrNotOpen(generation, result);
  }
  return Connect(generation);
}

// Polls once for everything of interest, because a poll costs as much as sending a small piece. Printers drop idle
// connections; this shows as an error or as the end of the data.
bool SocketPort::IsDropped(Generation generation, bool* writable) const {
  *writable = false;
  const Use use(*this, generation);
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
  const Generation generation = generation_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  if (length == 0 || IsAborted()) {
    return VEXO_OK;
  }
  platform::ClearSocketError();
  bool writable = false;
  if (IsDropped(generation, &writable)) {
    writable = false;
    const int32_t result = Reconnect(generation);
    if (result != VEXO_OK) {
      return result;
    }
  }
  return ResultOrNotOpen(generation, WriteAll(generation, writable, buffer + offset, length, written));
}

// `writable`: the first piece can be sent without waiting.
int32_t SocketPort::WriteAll(Generation generation, bool writable, const uint8_t* bytes, uint32_t length,
                             uint32_t* written) {
  const uint32_t largest_piece = buffer_size_ != 0 ? buffer_size_ : kDefaultPiece;
  WriteBudget budget(TransferBudget(timeouts().writeMultiplier, length, timeouts().writeConstant));
  bool reconnected = false;
  int32_t retried_error = VEXO_OK;
  while (*written < length && !IsAborted()) {
    if (!budget.Step()) {
      // Compatibility: a budget that ends between two pieces returns VEXO_OK unless the last send failed.
      return retried_error;
    }
    const int room = std::exchange(writable, false) ? 1 : AwaitWritable(socket_.get(), budget.limit());
    if (room <= 0) {
      return room == 0 ? VEXO_ERROR_IO_WRITE_TIMEOUT : LastSocketError();
    }
    const uint32_t piece = std::min(largest_piece, length - *written);
    const int sent = platform::Send(Use(*this, generation).get(), bytes + *written, piece);
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
    const int32_t result = Reconnect(generation);
    if (result != VEXO_OK) {
      return result;
    }
  }
  return VEXO_OK;
}

int32_t SocketPort::Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  const Generation generation = generation_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  return length == 0 ? VEXO_OK : ResultOrNotOpen(generation, ReadAll(generation, buffer + offset, length, read));
}

// Without a socket, after a failed reconnect, select fails.
int32_t SocketPort::ReadAll(Generation generation, uint8_t* bytes, uint32_t length, uint32_t* read) {
  const uint32_t budget = TransferBudget(timeouts().readMultiplier, length, timeouts().readConstant);
  int64_t limit = budget != 0 ? budget : platform::kNoLimit;
  while (*read < length && !IsAborted()) {
    const int readable = AwaitReadableOrException(socket_.get(), limit);
    if (readable <= 0) {
      return readable == 0 ? VEXO_ERROR_IO_READ_TIMEOUT : LastSocketError();
    }
    const int received = platform::Receive(Use(*this, generation).get(), bytes + *read, length - *read);
    if (received == kSocketFailure) {
      return LastSocketError();
    }
    if (received == 0) {
      // Compatibility: reconnects and returns the result of that, with the bytes read so far.
      return Reconnect(generation);
    }
    *read += static_cast<uint32_t>(received);
    limit = budget != 0 ? timeouts().readInterval : platform::kNoLimit;
  }
  return VEXO_OK;
}

int32_t SocketPort::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  const Generation generation = generation_;
  if (!is_open_) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  if (from > to) {
    return VEXO_ERROR_PARAMETER;
  }
  platform::ClearSocketError();
  const Use use(*this, generation);
  const int readable = AwaitReadable(use.get(), 0);
  if (readable == 0) {
    return VEXO_OK;
  }
  const int received = readable > 0 ? platform::Receive(use.get(), buffer + from, to - from) : kSocketFailure;
  if (received == kSocketFailure) {
    return ResultOrNotOpen(generation, LastSocketError());
  }
  *read = static_cast<uint32_t>(received);
  return VEXO_OK;
}

}  // namespace vexo
