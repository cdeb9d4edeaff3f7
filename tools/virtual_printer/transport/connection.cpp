#include "virtual_printer/transport/connection.h"

#include <utility>
#include <vector>

namespace virtual_printer {
namespace {

// With this many unsent answers the connection stops reading, just as the buffers of a real printer fill up.
constexpr std::size_t kMaxQueuedPieces = 256;

// Reports about other hosts' jobs are queued even so. Beyond this limit they are lost.
constexpr std::size_t kMaxBacklog = 65536;

std::string ReasonFor(const std::error_code& error) {
  const bool closed = error == ByteStream::kHostSendsNoMore || error == ByteStream::kHostHasGone;
  return closed ? "closed by the host" : "lost: " + error.message();
}

}  // namespace

Connection::Connection(std::unique_ptr<ByteStream> stream, int number, const ConnectionFaults& faults, Trace& trace,
                       ConnectionListener& listener)
    : stream_(std::move(stream)),
      pause_(stream_->Executor()),
      number_(number),
      faults_(faults),
      trace_(trace),
      listener_(listener),
      limit_(faults) {}

void Connection::Process(const WireEvent& event) {
  if (closed_) {
    return;
  }
  if (event.direction != WireEvent::Direction::kSent) {
    trace_.Write(event);
    return;
  }
  Queue(event.message);
  if (!sending_) {
    SendNext();
  }
}

void Connection::Drop(const std::string& why) {
  if (closed_) {
    return;
  }
  TellHostEnded();
  Close(why + (queue_.empty() ? "" : ", unsent answers are lost"));
}

void Connection::Read() {
  reading_ = true;
  stream_->Read(asio::buffer(received_), [self = shared_from_this()](const std::error_code& error, std::size_t size) {
    self->reading_ = false;
    if (self->closed_) {
      return;
    }
    if (error) {
      self->OnHostEnded(error);
    } else {
      self->OnReceived(size);
    }
  });
}

void Connection::OnReceived(std::size_t size) {
  listener_.OnReceived(number_, received_.data(), limit_.Admit(size));
  if (closed_) {
    return;
  }
  if (limit_.Reached()) {
    Drop("dropped at byte " + std::to_string(*faults_.drop_after));
  } else if (queue_.size() < kMaxQueuedPieces) {
    Read();
  }
}

void Connection::OnHostEnded(const std::error_code& error) {
  TellHostEnded();
  close_reason_ = ReasonFor(error);
  const bool may_receive = error == ByteStream::kHostSendsNoMore;
  if (!sending_ || !may_receive) {
    Drop(close_reason_);
  }
}

void Connection::TellHostEnded() {
  if (!std::exchange(host_ended_, true)) {
    listener_.OnHostEnded(number_);
  }
}

void Connection::Queue(const Message& message) {
  if (queue_.size() >= kMaxBacklog) {
    trace_.Note(number_, "not sent, the host takes nothing: " + message.text);
    return;
  }
  std::vector<AnswerPiece> pieces = PlanAnswer(faults_, message.bytes);
  if (pieces.empty()) {
    trace_.Note(number_, "not answered: " + message.text);
    return;
  }
  pieces.front().pause += message.pause;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    std::string text = message.text;
    if (pieces.size() > 1) {
      text += " (byte " + std::to_string(i + 1) + " of " + std::to_string(pieces.size()) + ")";
    }
    queue_.push_back({pieces[i], std::move(text)});
  }
}

void Connection::SendNext() {
  sending_ = !queue_.empty();
  if (!sending_) {
    if (!close_reason_.empty()) {
      Close(close_reason_);
    }
    return;
  }
  pause_.expires_after(queue_.front().piece.pause);
  pause_.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error && !self->closed_) {
      self->Write();
    }
  });
}

void Connection::Write() {
  const std::size_t pieces = CountReadyPieces();
  outgoing_.clear();
  for (std::size_t i = 0; i < pieces; ++i) {
    const QueuedPiece& queued = queue_[i];
    trace_.Write({number_, WireEvent::Direction::kSent, {queued.piece.bytes, queued.text}});
    outgoing_.insert(outgoing_.end(), queued.piece.bytes.begin(), queued.piece.bytes.end());
  }
  stream_->Write(asio::buffer(outgoing_), [self = shared_from_this(), pieces](const std::error_code& error) {
    if (self->closed_) {
      return;
    }
    if (error) {
      self->Drop(ReasonFor(error));
    } else {
      self->OnWritten(pieces);
    }
  });
}

// Messages that are due together are sent together. Otherwise the start of the next job could arrive after the host has
// asked for the status, and the host would read it as the answer.
std::size_t Connection::CountReadyPieces() const {
  std::size_t count = 1;
  const bool pieces_leave_alone = faults_.split_pause.has_value();
  while (!pieces_leave_alone && count < queue_.size() && queue_[count].piece.pause == std::chrono::milliseconds(0)) {
    ++count;
  }
  return count;
}

void Connection::OnWritten(std::size_t pieces) {
  queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(pieces));
  SendNext();
  const bool may_read = !closed_ && close_reason_.empty() && !reading_;
  if (may_read && queue_.size() < kMaxQueuedPieces) {
    Read();
  }
}

void Connection::Close(const std::string& why) {
  closed_ = true;
  trace_.Note(number_, why);
  pause_.cancel();
  stream_->Close();
  listener_.OnClosed(number_);
}

}  // namespace virtual_printer
