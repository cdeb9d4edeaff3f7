#include "virtual_printer/transport/server_group.h"

#include <stdexcept>
#include <system_error>

namespace virtual_printer {
namespace {

// Before the next attempt to return to a place that is in use.
constexpr std::chrono::milliseconds kReturnPause{100};

}  // namespace

ServerGroup::ServerGroup(asio::io_context& context, Lifetime lifetime, HostListener& listener, OnBack on_back)
    : context_(context), outage_(context), lifetime_(lifetime), listener_(listener), on_back_(std::move(on_back)) {}

void ServerGroup::Open(PrinterMode mode) {
  if (is_open_) {
    return;
  }
  is_open_ = true;
  for (const auto& server : servers_) {
    try {
      server->Open(mode);
    } catch (const std::system_error& error) {
      Close();
      throw ListenError(server->Place(mode), error.code());
    }
  }
  places_ = Places(mode);
}

void ServerGroup::LeaveFor(std::chrono::milliseconds duration, PrinterMode back_as) {
  if (lifetime_ == Lifetime::kOneConnection) {
    return;  // It accepts no other connection anyway.
  }
  // Hosts reconnect at once. If the change takes no time, a host that is waiting to be accepted must meet the printer
  // in its new mode and must not lose what it has already sent.
  const bool stays = duration == duration.zero() && Places(back_as) == places_;
  if (!stays) {
    Close();
  }
  outage_.expires_after(duration);
  outage_.async_wait([this, back_as](const std::error_code& cancelled) {
    if (!cancelled) {
      Return(back_as);
    }
  });
}

std::string ServerGroup::Places(PrinterMode mode) const {
  std::string places;
  for (const auto& server : servers_) {
    places += (places.empty() ? "" : " and ") + server->Place(mode);
  }
  return places;
}

void ServerGroup::OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, OnClosed on_closed) {
  if (lifetime_ == Lifetime::kOneConnection) {
    Close();
    on_closed = [this] { context_.stop(); };
  }
  listener_.OnHost(std::move(stream), from, std::move(on_closed));
}

void ServerGroup::Return(PrinterMode mode) {
  try {
    Open(mode);
  } catch (const std::runtime_error&) {
    // The printer must come back, however late.
    LeaveFor(kReturnPause, mode);
    return;
  }
  on_back_(mode);
}

void ServerGroup::Close() {
  is_open_ = false;
  for (const auto& server : servers_) {
    server->Close();
  }
}

}  // namespace virtual_printer
