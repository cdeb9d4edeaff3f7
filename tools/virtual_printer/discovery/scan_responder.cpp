#include "virtual_printer/discovery/scan_responder.h"

#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "virtual_printer/discovery/network_interface.h"
#include "virtual_printer/transport/server.h"

namespace virtual_printer {
namespace {

using asio::ip::address_v4;
using asio::ip::udp;

// A socket that is bound to an address receives no broadcasts, so they need sockets of their own. On Windows it does,
// and binding to a broadcast address is not possible.
#ifdef _WIN32
constexpr bool kBroadcastsNeedSockets = false;
#else
constexpr bool kBroadcastsNeedSockets = true;
#endif

}  // namespace

ScanResponder::Receiver::Receiver(asio::io_context& context, ScanKind scan_kind, const address_v4& address)
    : kind(scan_kind), socket(context) {
  const udp::endpoint endpoint(address, ScanPort(kind));
  socket.open(endpoint.protocol());
  // Other printers and hosts on this machine use the same port.
  socket.set_option(udp::socket::reuse_address(true));
  std::error_code error;
  socket.bind(endpoint, error);
  if (error) {
    throw ListenError(EndpointText(endpoint), error);
  }
}

ScanResponder::ScanResponder(asio::io_context& context, const NetworkIdentity& identity, AnswerPause answer_pause,
                             Trace& trace)
    : identity_(identity), answer_pause_(std::move(answer_pause)), trace_(trace) {
  Listen(context, ScanKind::kReceiptPrinters);
  Listen(context, ScanKind::kLabelPrinters);
}

void ScanResponder::Listen(asio::io_context& context, ScanKind kind) {
  const address_v4 address(identity_.address);
  Receiver& own_address = receivers_.emplace_back(context, kind, address);
  ReceiveNext(own_address, own_address);
  if (kBroadcastsNeedSockets) {
    ReceiveNext(receivers_.emplace_back(context, kind, address_v4::broadcast()), own_address);
    if (const auto network = FindInterface(address)) {
      ReceiveNext(receivers_.emplace_back(context, kind, network->broadcast), own_address);
    }
  }
}

void ScanResponder::ReceiveNext(Receiver& receiver, Receiver& own_address) {
  receiver.socket.async_receive_from(
      asio::buffer(receiver.datagram), receiver.host,
      [this, &receiver, &own_address](const std::error_code& error, std::size_t size) {
        if (error == asio::error::operation_aborted) {
          return;
        }
        if (!error) {  // Windows reports here that an earlier answer did not reach its host.
          OnDatagram(receiver, size, own_address);
        }
        ReceiveNext(receiver, own_address);
      });
}

void ScanResponder::OnDatagram(const Receiver& receiver, std::size_t size, Receiver& own_address) {
  const std::string_view datagram(receiver.datagram.data(), size);
  const bool is_question = IsScanQuestion(receiver.kind, datagram);
  const std::string text = (is_question ? "scan from " : "not understood, from ") + EndpointText(receiver.host);
  trace_.Write({kDatagrams, WireEvent::Direction::kReceived, {{datagram.begin(), datagram.end()}, text}});
  if (!is_question) {
    return;
  }
  const auto pause = answer_pause_();
  if (!pause) {
    trace_.Note(kDatagrams, "not answered: " + ScanAnswer(identity_).text);
    return;
  }
  auto timer = std::make_shared<asio::steady_timer>(own_address.socket.get_executor(), *pause);
  timer->async_wait([this, timer, host = receiver.host, &own_address](const std::error_code& error) {
    if (!error) {
      Answer(host, own_address);
    }
  });
}

void ScanResponder::Answer(const udp::endpoint& host, Receiver& own_address) {
  Message answer = ScanAnswer(identity_);
  std::error_code error;
  own_address.socket.send_to(asio::buffer(answer.bytes), host, 0, error);
  if (error) {
    trace_.Note(kDatagrams, "not sent: " + answer.text + ": " + error.message());
    return;
  }
  trace_.Write({kDatagrams, WireEvent::Direction::kSent, std::move(answer)});
}

}  // namespace virtual_printer
