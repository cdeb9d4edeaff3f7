#include "virtual_printer/tcp_server.h"

#include <chrono>
#include <memory>
#include <sstream>
#include <utility>

#include "virtual_printer/connection.h"

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
                     PrinterState& state, const Faults& faults, Trace& trace)
    : context_(context),
      acceptor_(context, endpoint, kReuseAddress),
      accept_pause_(context),
      lifetime_(lifetime),
      state_(state),
      faults_(faults),
      trace_(trace) {
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
    Serve(std::move(socket));
    if (lifetime_ == Lifetime::kOneConnection) {
      acceptor_.close();
    } else {
      Accept();
    }
  });
}

void TcpServer::Serve(asio::ip::tcp::socket socket) {
  const int number = ++connections_;
  std::error_code gone;
  std::ostringstream note;
  note << "connected from " << socket.remote_endpoint(gone);
  trace_.Note(number, note.str());
  std::make_shared<Connection>(std::move(socket), number, state_, faults_, trace_, [this] {
    OnConnectionClosed();
  })->Start();
}

void TcpServer::OnConnectionClosed() {
  if (lifetime_ == Lifetime::kOneConnection) {
    context_.stop();
  }
}

}  // namespace virtual_printer
