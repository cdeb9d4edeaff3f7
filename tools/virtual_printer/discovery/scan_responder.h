#ifndef VIRTUAL_PRINTER_DISCOVERY_SCAN_RESPONDER_H_
#define VIRTUAL_PRINTER_DISCOVERY_SCAN_RESPONDER_H_

#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>

#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// Answers scans: datagrams to the printer's address, to the broadcast address of its network, or to 255.255.255.255.
// Any number of printers on one machine receive the same broadcast.
class ScanResponder {
 public:
  // The pause before the next answer; nothing if the printer does not answer at present.
  using AnswerPause = std::function<std::optional<std::chrono::milliseconds>()>;

  // Listens from now on. The references must outlive the responder, which must outlive the running of the io_context.
  // Throws std::runtime_error if a port is not available.
  ScanResponder(asio::io_context& context, const NetworkIdentity& identity, AnswerPause answer_pause, Trace& trace);
  ScanResponder(const ScanResponder&) = delete;
  ScanResponder& operator=(const ScanResponder&) = delete;

 private:
  struct Receiver {
    Receiver(asio::io_context& context, ScanKind scan_kind, const asio::ip::address_v4& address);

    const ScanKind kind;
    asio::ip::udp::socket socket;
    asio::ip::udp::endpoint host;  // Sender of the last datagram.
    std::array<char, 2048> datagram{};
  };

  // Answers are sent from the receiver with the printer's own address.
  void Listen(asio::io_context& context, ScanKind kind);
  void ReceiveNext(Receiver& receiver, Receiver& own_address);
  void OnDatagram(const Receiver& receiver, std::size_t size, Receiver& own_address);
  void Answer(const asio::ip::udp::endpoint& host, Receiver& own_address);

  const NetworkIdentity identity_;
  const AnswerPause answer_pause_;
  Trace& trace_;
  std::deque<Receiver> receivers_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DISCOVERY_SCAN_RESPONDER_H_
