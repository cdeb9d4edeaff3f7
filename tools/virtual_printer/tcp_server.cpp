#include "virtual_printer/tcp_server.h"

#include <chrono>
#include <utility>

namespace virtual_printer {
namespace {

#ifdef _WIN32
// On Windows "reuse" would let two printers listen on one port, each getting some of the connections.
constexpr bool kReuseAddress = false;
#else
// Elsewhere it only lets a restarted printer have its port again at once.
constexpr bool kReuseAddress = true;
#endif

// When no connection can be taken, mostly for want of file handles, trying again at once would only burn time.
constexpr std::chrono::milliseconds kAcceptPause{100};

}  // namespace

TcpServer::TcpServer(asio::io_context& context, const asio::ip::tcp::endpoint& endpoint, Lifetime lifetime,
                     PrinterService& service)
    : context_(context),
      acceptor_(context, endpoint, kReuseAddress),
      accept_pause_(context),
      lifetime_(lifetime),
      service_(service) {
  Accept();
}

void TcpServer::Accept() {
  acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
    if (error == asio::error::operation_aborted) {
      return;
    }
    if (error) {
      accept_pause_.expires_after(kAcceptPause);
      accept_pause_.async_wait([this](const std::error_code& cancelled) {
        if (!cancelled) {
          Accept();
        }
      });
      return;
    }
    service_.Serve(std::move(socket), [this] { OnConnectionClosed(); });
    if (lifetime_ == Lifetime::kOneConnection) {
      acceptor_.close();
    } else {
      Accept();
    }
  });
}

void TcpServer::OnConnectionClosed() {
  if (lifetime_ == Lifetime::kOneConnection) {
    context_.stop();
  }
}

}  // namespace virtual_printer
