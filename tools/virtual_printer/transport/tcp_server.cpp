#include "virtual_printer/transport/tcp_server.h"

#include <chrono>
#include <memory>
#include <sstream>
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

std::string TextOf(const asio::ip::tcp::endpoint& endpoint) {
  std::ostringstream text;
  text << endpoint;
  return text.str();
}

class TcpStream : public DeviceStream<asio::ip::tcp::socket> {
 public:
  explicit TcpStream(asio::ip::tcp::socket socket) : DeviceStream(std::move(socket)) {
    // The single bytes of a split answer must leave one by one.
    std::error_code ignored;
    device_.set_option(asio::ip::tcp::no_delay(true), ignored);
  }

  void Close() override {
    std::error_code ignored;
    device_.shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    DeviceStream::Close();
  }
};

}  // namespace

TcpServer::TcpServer(asio::io_context& context, const TcpPorts& ports, HostListener& listener)
    : context_(context), ports_(ports), acceptor_(context), accept_pause_(context), listener_(listener) {}

void TcpServer::Open(PrinterMode mode) {
  acceptor_ = asio::ip::tcp::acceptor(context_, {ports_.address, ports_.Of(mode)}, kReuseAddress);
  if (mode == PrinterMode::kOrdinary || !ports_.loader) {
    ports_.printer = acceptor_.local_endpoint().port();
  }
  Accept();
}

void TcpServer::Close() {
  std::error_code ignored;
  acceptor_.close(ignored);
  accept_pause_.cancel();
}

std::string TcpServer::Place(PrinterMode mode) const { return TextOf({ports_.address, ports_.Of(mode)}); }

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
    std::error_code gone;
    const std::string from = TextOf(socket.remote_endpoint(gone));
    listener_.OnHost(std::make_unique<TcpStream>(std::move(socket)), from, [] {});
    if (acceptor_.is_open()) {
      Accept();
    }
  });
}

}  // namespace virtual_printer
