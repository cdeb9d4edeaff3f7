#include "virtual_printer/transport/server_group.h"

#include <chrono>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace virtual_printer {
namespace {

// Before the next attempt to come back to a place that somebody else has for now.
constexpr std::chrono::milliseconds kReturnPause{100};

}  // namespace

ServerGroup::ServerGroup(asio::io_context& context, Lifetime lifetime, PrinterService& service, OnBack on_back)
    : context_(context), outage_(context), lifetime_(lifetime), service_(service), on_back_(std::move(on_back)) {
  service_.SetOutageListener(this);
}

ServerGroup::~ServerGroup() { service_.SetOutageListener(nullptr); }

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
      // The one failure that everybody meets gets the same plain words on every system.
      const bool in_use = error.code() == asio::error::address_in_use;
      throw std::runtime_error("cannot listen on " + server->Place(mode) + ": " +
                               (in_use ? "it is in use" : error.code().message()));
    }
  }
  places_ = Places(mode);
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
  service_.Serve(std::move(stream), from, std::move(on_closed));
}

void ServerGroup::OnOutage(const Outage& outage) {
  if (lifetime_ == Lifetime::kOneConnection) {
    return;  // It takes no other connection anyway.
  }
  // Hosts connect again at once. One that waits to be let in must meet what the printer becomes, and not lose what it
  // has sent already, if that takes no time.
  const bool stays = outage.duration == outage.duration.zero() && Places(outage.back_as) == places_;
  if (!stays) {
    Close();
  }
  outage_.expires_after(outage.duration);
  outage_.async_wait([this, mode = outage.back_as](const std::error_code& cancelled) {
    if (!cancelled) {
      Return(mode);
    }
  });
}

void ServerGroup::Return(PrinterMode mode) {
  try {
    Open(mode);
  } catch (const std::runtime_error&) {
    // The printer must come back, however late.
    OnOutage({mode, kReturnPause});
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
