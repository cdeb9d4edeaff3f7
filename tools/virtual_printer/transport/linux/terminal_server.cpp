#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "virtual_printer/transport/linux/pseudo_terminal.h"
#include "virtual_printer/transport/server.h"

namespace virtual_printer {
namespace {

// The system does not notify the opening of a terminal. Hosts wait far longer than this for an answer.
constexpr std::chrono::milliseconds kPollInterval{10};

// A dropped host may close and reopen the line between two polls, so the drop must also end by itself.
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

  // A full terminal stays full when its host leaves. Only the hang-up shows that it has left.
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

// The pseudo terminal is created when the server is first opened and stays from then on: while the server is closed,
// hosts can open the line, but their bytes are discarded. So are the bytes of a host that was dropped, for a while or
// until it has closed the line.
class TerminalServer : public Server {
 public:
  TerminalServer(asio::io_context& context, const std::string& link, HostListener& listener);

  void Open(PrinterMode mode) override;
  void Close() override { open_ = false; }
  std::string Place(PrinterMode /*mode*/) const override { return link_; }

 private:
  using Clock = asio::steady_timer::clock_type;

  void PollSoon();
  void Poll();
  void Serve();
  void OnClosed();

  asio::io_context& context_;
  const std::string link_;
  std::optional<PseudoTerminal> terminal_;
  asio::steady_timer next_poll_;
  HostListener& listener_;
  bool open_ = false;
  bool serving_ = false;
  bool host_has_gone_ = false;  // The host that was served last.
  Clock::time_point ignored_until_;
};

TerminalServer::TerminalServer(asio::io_context& context, const std::string& link, HostListener& listener)
    : context_(context), link_(link), next_poll_(context), listener_(listener) {}

void TerminalServer::Open(PrinterMode /*mode*/) {
  if (!terminal_) {
    terminal_.emplace(link_);
  }
  terminal_->DiscardReceived();
  open_ = true;
  ignored_until_ = {};
  if (!serving_) {
    PollSoon();
  }
}

void TerminalServer::PollSoon() {
  next_poll_.expires_after(kPollInterval);
  next_poll_.async_wait([this](const std::error_code& cancelled) {
    if (!cancelled) {
      Poll();
    }
  });
}

void TerminalServer::Poll() {
  if (!open_ || Clock::now() < ignored_until_) {
    terminal_->DiscardReceived();
    if (!terminal_->HasHost()) {
      ignored_until_ = {};  // The next host has not been dropped.
    }
  } else if (terminal_->HasHost()) {
    Serve();
    return;
  }
  PollSoon();
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
    ignored_until_ = Clock::now() + kDropTime;
  }
  PollSoon();
}

}  // namespace

std::unique_ptr<Server> MakeLineServer(asio::io_context& context, const std::string& name, HostListener& listener) {
  return std::make_unique<TerminalServer>(context, name, listener);
}

}  // namespace virtual_printer
