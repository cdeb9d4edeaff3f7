#include "virtual_printer/transport/terminal_server.h"

#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <system_error>
#include <utility>

#include "virtual_printer/transport/line_server.h"

namespace virtual_printer {
namespace {

// Nobody is told when a terminal is opened. A host that has opened it waits far longer than this for an answer.
constexpr std::chrono::milliseconds kLookPause{10};

// A host may close the line and open it again before anybody looks, so being dropped must end by itself, too.
constexpr std::chrono::milliseconds kDropTime{300};

class TerminalStream : public DeviceStream<asio::posix::stream_descriptor> {
 public:
  TerminalStream(asio::posix::stream_descriptor descriptor, const PseudoTerminal& terminal,
                 std::function<void()> on_host_gone)
      : DeviceStream(std::move(descriptor)), terminal_(terminal), on_host_gone_(std::move(on_host_gone)) {
    device_.non_blocking(true);
  }

  void Read(asio::mutable_buffer buffer, ReadHandler on_read) override {
    device_.async_read_some(buffer,
                            [this, on_read = std::move(on_read)](const std::error_code& error, std::size_t size) {
                              const bool gone = error == std::error_code(EIO, asio::error::get_system_category());
                              on_read(gone ? HostHasGone() : error, size);
                            });
  }

  // A terminal that is full stays so when its host goes, and nothing but the hang-up tells.
  void Write(asio::const_buffer buffer, WriteHandler on_written) override {
    device_.async_wait(asio::posix::stream_descriptor::wait_write,
                       [this, buffer, on_written = std::move(on_written)](std::error_code error) mutable {
                         const std::size_t size = error ? 0 : device_.write_some(buffer, error);
                         if (error == asio::error::would_block) {
                           error = terminal_.IsHungUp() ? HostHasGone() : std::error_code();
                         }
                         buffer += size;
                         if (error || buffer.size() == 0) {
                           on_written(error);
                         } else {
                           Write(buffer, std::move(on_written));
                         }
                       });
  }

 private:
  std::error_code HostHasGone() {
    on_host_gone_();
    return kHostHasGone;
  }

  const PseudoTerminal& terminal_;
  const std::function<void()> on_host_gone_;
};

}  // namespace

std::unique_ptr<Server> MakeLineServer(asio::io_context& context, const std::string& name, HostListener& listener) {
  return std::make_unique<TerminalServer>(context, name, listener);
}

TerminalServer::TerminalServer(asio::io_context& context, const std::string& link, HostListener& listener)
    : context_(context), link_(link), next_look_(context), listener_(listener) {}

void TerminalServer::Open(PrinterMode /*mode*/) {
  if (!terminal_) {
    terminal_.emplace(link_);
  }
  terminal_->DiscardReceived();
  open_ = true;
  deaf_until_ = {};
  if (!serving_) {
    LookSoon();
  }
}

void TerminalServer::LookSoon() {
  next_look_.expires_after(kLookPause);
  next_look_.async_wait([this](const std::error_code& cancelled) {
    if (!cancelled) {
      Look();
    }
  });
}

void TerminalServer::Look() {
  if (!open_ || Clock::now() < deaf_until_) {
    terminal_->DiscardReceived();
    if (!terminal_->HasHost()) {
      deaf_until_ = {};  // Whoever comes next has not been dropped.
    }
  } else if (terminal_->HasHost()) {
    Serve();
    return;
  }
  LookSoon();
}

void TerminalServer::Serve() {
  serving_ = true;
  host_has_gone_ = false;
  asio::posix::stream_descriptor descriptor(context_, terminal_->Duplicate());
  auto stream = std::make_unique<TerminalStream>(std::move(descriptor), *terminal_, [this] { host_has_gone_ = true; });
  listener_.OnHost(std::move(stream), link_, [this] { OnClosed(); });
}

void TerminalServer::OnClosed() {
  serving_ = false;
  if (host_has_gone_) {
    terminal_->DiscardSent();
  } else {
    deaf_until_ = Clock::now() + kDropTime;
  }
  LookSoon();
}

}  // namespace virtual_printer
