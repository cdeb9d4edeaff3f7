#include "virtual_printer/discovery/scan_responder.h"

#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "virtual_printer/discovery/network_interface.h"
#include "virtual_printer/transport/listen_failure.h"
#include "virtual_printer/wire/trace_format.h"

namespace virtual_printer {
namespace {

using asio::ip::address_v4;
using asio::ip::udp;

// A socket with an address of its own hears no broadcasts, except on Windows, where none can have a broadcast address.
#ifdef _WIN32
constexpr bool kBroadcastsNeedSockets = false;
#else
constexpr bool kBroadcastsNeedSockets = true;
#endif

std::string HostText(const char* words, const udp::endpoint& host) {
  std::ostringstream text;
  text << words << ' ' << host;
  return text.str();
}

}  // namespace

ScanResponder::Ear::Ear(asio::io_context& context, ScanKind scan_kind, const address_v4& address)
    : kind(scan_kind), socket(context) {
  const udp::endpoint endpoint(address, ScanPort(kind));
  socket.open(endpoint.protocol());
  // The other printers of this machine, and a host on it, use the same port.
  socket.set_option(udp::socket::reuse_address(true));
  std::error_code error;
  socket.bind(endpoint, error);
  if (error) {
    throw ListenFailure(endpoint, error);
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
  Ear& own_address = ears_.emplace_back(context, kind, address);
  Hear(own_address, own_address);
  if (kBroadcastsNeedSockets) {
    Hear(ears_.emplace_back(context, kind, address_v4::broadcast()), own_address);
    if (const auto network = FindInterface(address)) {
      Hear(ears_.emplace_back(context, kind, network->broadcast), own_address);
    }
  }
}

void ScanResponder::Hear(Ear& ear, Ear& own_address) {
  ear.socket.async_receive_from(asio::buffer(ear.datagram), ear.host,
                                [this, &ear, &own_address](const std::error_code& error, std::size_t size) {
                                  if (error == asio::error::operation_aborted) {
                                    return;
                                  }
                                  if (!error) {  // Windows tells here of a host that has gone before its answer came.
                                    OnDatagram(ear, size, own_address);
                                  }
                                  Hear(ear, own_address);
                                });
}

void ScanResponder::OnDatagram(const Ear& ear, std::size_t size, Ear& own_address) {
  const std::string_view datagram(ear.datagram.data(), size);
  const bool asks = AsksForPrinters(ear.kind, datagram);
  const Bytes bytes(datagram.begin(), datagram.end());
  trace_.Event({kDatagrams,
                WireEvent::Direction::kReceived,
                {bytes, HostText(asks ? "scan from" : "not understood, from", ear.host)}});
  if (!asks) {
    return;
  }
  const auto pause = answer_pause_();
  if (!pause) {
    trace_.Note(kDatagrams, "not answered: " + ScanAnswer(identity_).text);
    return;
  }
  auto timer = std::make_shared<asio::steady_timer>(own_address.socket.get_executor(), *pause);
  timer->async_wait([this, timer, host = ear.host, &own_address](const std::error_code& error) {
    if (!error) {
      Answer(host, own_address);
    }
  });
}

void ScanResponder::Answer(const udp::endpoint& host, Ear& own_address) {
  Message answer = ScanAnswer(identity_);
  std::error_code error;
  own_address.socket.send_to(asio::buffer(answer.bytes), host, 0, error);
  if (error) {
    trace_.Note(kDatagrams, "not sent: " + answer.text + ": " + error.message());
    return;
  }
  trace_.Event({kDatagrams, WireEvent::Direction::kSent, std::move(answer)});
}

}  // namespace virtual_printer
