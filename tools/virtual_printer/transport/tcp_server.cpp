#include "virtual_printer/transport/tcp_server.h"

#include <chrono>
#include <memory>
#include <system_error>
#include <utility>

namespace virtual_printer {
namespace {

#ifdef _WIN32
// On Windows SO_REUSEADDR would let two printers listen on one port, each getting some of the connections.
constexpr bool kReuseAddress = false;
#else
// Elsewhere it only lets a restarted printer reuse its port at once.
constexpr bool kReuseAddress = true;
#endif

// Before the next attempt if accepting fails, usually because there are no file handles left.
constexpr std::chrono::milliseconds kAcceptPause{100};

class TcpStream : public DeviceStream<asio::ip::tcp::socket> {
 public:
  explicit TcpStream(asio::ip::tcp::socket socket) : DeviceStream(std::move(socket)) {
    // The single bytes of a split answer must be sent one by one.
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

std::string TcpServer::Place(PrinterMode mode) const {
  return EndpointText(asio::ip::tcp::endpoint(ports_.address, ports_.Of(mode)));
}

void TcpServer::Accept() {
  acceptor_.async_accept([this](const std::error_code& error, asio::ip::tcp::socket socket) {
    // The server was closed meanwhile.
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
    std::error_code ignored;
    const std::string from = EndpointText(socket.remote_endpoint(ignored));
    listener_.OnHost(std::make_unique<TcpStream>(std::move(socket)), from, [] {});
    if (acceptor_.is_open()) {
      Accept();
    }
  });
}

}  // namespace virtual_printer
