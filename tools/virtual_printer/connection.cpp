#include "virtual_printer/connection.h"

#include <utility>

namespace virtual_printer {
namespace {

// A host that sends on without ever taking an answer is not read any further at this backlog, as a real printer's
// buffers fill up, too.
constexpr std::size_t kMaxQueuedPieces = 256;

}  // namespace

Connection::Connection(asio::ip::tcp::socket socket, int number, PrinterState& state, const Faults& faults,
                       Trace& trace, std::function<void()> on_closed)
    : socket_(std::move(socket)),
      pause_(socket_.get_executor()),
      number_(number),
      faults_(faults),
      trace_(trace),
      on_closed_(std::move(on_closed)),
      model_(state),
      limit_(faults) {}

void Connection::Start() {
  // The single bytes of a split answer must leave one by one.
  std::error_code ignored;
  socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
  Read();
}

void Connection::Read() {
  reading_ = true;
  socket_.async_read_some(asio::buffer(received_),
                          [self = shared_from_this()](const std::error_code& error, std::size_t size) {
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
  Handle(model_.Receive(received_.data(), limit_.Admit(size)));
  if (limit_.Reached()) {
    Handle(model_.Finish());
    Close("dropped at byte " + std::to_string(*faults_.drop_after) +
          (queue_.empty() ? "" : ", unsent answers are lost"));
    return;
  }
  if (!sending_) {
    SendNext();
  }
  if (queue_.size() < kMaxQueuedPieces) {
    Read();
  }
}

void Connection::OnHostEnded(const std::error_code& error) {
  Handle(model_.Finish());
  host_ended_ = error == asio::error::eof ? "closed by the host" : "lost: " + error.message();
  // A host may close its sending side only, and still wait for the answers.
  if (!sending_) {
    Close(host_ended_);
  }
}

void Connection::Handle(const std::vector<WireEvent>& events) {
  for (const WireEvent& event : events) {
    if (event.direction == WireEvent::Direction::kReceived) {
      trace_.Event(number_, event);
    } else {
      QueueAnswer(event);
    }
  }
}

void Connection::QueueAnswer(const WireEvent& answer) {
  const std::vector<AnswerPiece> pieces = PlanAnswer(faults_, answer.bytes);
  if (pieces.empty()) {
    trace_.Note(number_, "not answered: " + answer.text);
  }
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    std::string text = answer.text;
    if (pieces.size() > 1) {
      text += " (byte " + std::to_string(i + 1) + " of " + std::to_string(pieces.size()) + ")";
    }
    queue_.push_back({pieces[i], std::move(text)});
  }
}

void Connection::SendNext() {
  sending_ = !queue_.empty();
  if (!sending_) {
    if (!host_ended_.empty()) {
      Close(host_ended_);
    }
    return;
  }
  pause_.expires_after(queue_.front().piece.pause);
  pause_.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (!error && !self->closed_) {
      self->WriteFront();
    }
  });
}

void Connection::WriteFront() {
  const QueuedPiece& front = queue_.front();
  trace_.Event(number_, {WireEvent::Direction::kSent, front.piece.bytes, front.text});
  asio::async_write(socket_, asio::buffer(front.piece.bytes),
                    [self = shared_from_this()](const std::error_code& error, std::size_t) {
                      if (self->closed_) {
                        return;
                      }
                      if (error) {
                        self->Close("lost: " + error.message());
                        return;
                      }
                      self->queue_.pop_front();
                      self->SendNext();
                      const bool may_read = !self->closed_ && self->host_ended_.empty() && !self->reading_;
                      if (may_read && self->queue_.size() < kMaxQueuedPieces) {
                        self->Read();
                      }
                    });
}

void Connection::Close(const std::string& why) {
  closed_ = true;
  trace_.Note(number_, why);
  std::error_code ignored;
  pause_.cancel();
  socket_.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
  socket_.close(ignored);
  on_closed_();
}

}  // namespace virtual_printer
