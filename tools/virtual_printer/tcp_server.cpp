#include "virtual_printer/tcp_server.h"

#include <chrono>
#include <system_error>
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

TcpServer::TcpServer(asio::io_context& context, const TcpPorts& ports, PrinterMode mode, Lifetime lifetime,
                     PrinterService& service, OnBack on_back)
    : context_(context),
      ports_(ports),
      acceptor_(context),
      accept_pause_(context),
      outage_(context),
      lifetime_(lifetime),
      service_(service),
      on_back_(std::move(on_back)) {
  Listen(mode);
  service_.SetOutageListener(this);
}

TcpServer::~TcpServer() { service_.SetOutageListener(nullptr); }

void TcpServer::Listen(PrinterMode mode) {
  acceptor_ = asio::ip::tcp::acceptor(context_, {ports_.address, ports_.Of(mode)}, kReuseAddress);
  if (mode == PrinterMode::kOrdinary || !ports_.loader) {
    ports_.printer = acceptor_.local_endpoint().port();
  }
  Accept();
}

void TcpServer::OnOutage(const Outage& outage) {
  if (lifetime_ == Lifetime::kOneConnection) {
    return;  // It takes no other connection anyway.
  }
  std::error_code ignored;
  acceptor_.close(ignored);
  accept_pause_.cancel();
  outage_.expires_after(outage.duration);
  outage_.async_wait([this, mode = outage.back_as](const std::error_code& cancelled) {
    if (!cancelled) {
      Return(mode);
    }
  });
}

void TcpServer::Return(PrinterMode mode) {
  try {
    Listen(mode);
  } catch (const std::system_error&) {
    // Somebody else has the port for now. The printer must come back, however late.
    OnOutage({mode, kAcceptPause});
    return;
  }
  on_back_(mode);
}

void TcpServer::Accept() {
  acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
    // What was under way when the printer left the network finds nobody.
    if (error == asio::error::operation_aborted || !acceptor_.is_open()) {
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
