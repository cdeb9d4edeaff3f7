#ifndef VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_
#define VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_

#include <asio.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// All places of one printer. They open and close together.
class ServerGroup : private HostListener {
 public:
  enum class Lifetime {
    kUntilStopped,
    kOneConnection,  // Accepts one connection only, and stops the io_context when it has ended.
  };

  using OnBack = std::function<void(PrinterMode mode)>;

  // Passes hosts on to the listener. Calls on_back when the servers are open again after an outage. The references must
  // outlive the group.
  ServerGroup(asio::io_context& context, Lifetime lifetime, HostListener& listener, OnBack on_back);
  ServerGroup(const ServerGroup&) = delete;
  ServerGroup& operator=(const ServerGroup&) = delete;

  // The listener for servers that are added, before the group is opened.
  HostListener& Hosts() { return *this; }
  void Add(std::unique_ptr<Server> server) { servers_.push_back(std::move(server)); }

  // Opens all servers or none, unless they are open. Throws std::runtime_error with a message for people if one of them
  // cannot be opened.
  void Open(PrinterMode mode);

  // The printer leaves its places for this long and comes back in the mode. Call this before dropping the connections.
  void LeaveFor(std::chrono::milliseconds duration, PrinterMode back_as);

  // `127.0.0.1:9100`, or several places joined by " and ".
  std::string Places(PrinterMode mode) const;

 private:
  void OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, OnClosed on_closed) override;
  void Return(PrinterMode mode);
  void Close();

  asio::io_context& context_;
  asio::steady_timer outage_;
  const Lifetime lifetime_;
  HostListener& listener_;
  const OnBack on_back_;
  std::vector<std::unique_ptr<Server>> servers_;
  bool is_open_ = false;
  std::string places_;  // Where the group was opened.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_
