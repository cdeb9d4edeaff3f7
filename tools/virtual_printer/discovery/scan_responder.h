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
#include "virtual_printer/model/scan_answer.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// Answers hosts that look for printers with datagrams to the printer's address, to all of its network, or to all
// networks. Any number of printers on one machine hear the same broadcast.
class ScanResponder {
 public:
  // How long the printer takes for an answer; nothing while it gives none.
  using AnswerPause = std::function<std::optional<std::chrono::milliseconds>()>;

  // Hears from now on. The references must outlive the responder, which must outlive the running of the io_context.
  // Throws std::runtime_error when a port cannot be had.
  ScanResponder(asio::io_context& context, const NetworkIdentity& identity, AnswerPause answer_pause, Trace& trace);
  ScanResponder(const ScanResponder&) = delete;
  ScanResponder& operator=(const ScanResponder&) = delete;

 private:
  struct Ear {
    Ear(asio::io_context& context, ScanKind scan_kind, const asio::ip::address_v4& address);

    const ScanKind kind;
    asio::ip::udp::socket socket;
    asio::ip::udp::endpoint host;  // Of the last datagram.
    std::array<char, 2048> datagram{};
  };

  void Listen(asio::io_context& context, ScanKind kind);
  void Hear(Ear& ear, Ear& own_address);
  void OnDatagram(const Ear& ear, std::size_t size, Ear& own_address);
  void Answer(const asio::ip::udp::endpoint& host, Ear& own_address);

  const NetworkIdentity identity_;
  const AnswerPause answer_pause_;
  Trace& trace_;
  std::deque<Ear> ears_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DISCOVERY_SCAN_RESPONDER_H_
