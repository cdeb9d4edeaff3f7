#ifndef VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_
#define VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_

#include <asio.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "virtual_printer/app/printer_service.h"
#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// All places in which one printer is found. They close and open together: a printer that restarts is nowhere, unless
// that takes it no time.
class ServerGroup : private HostListener, private OutageListener {
 public:
  enum class Lifetime {
    kUntilStopped,
    kOneConnection,  // Takes one connection only; the io_context is stopped when it has ended.
  };

  using OnBack = std::function<void(PrinterMode mode)>;

  // After an outage the group opens its servers again, and says so. The references must outlive the group.
  ServerGroup(asio::io_context& context, Lifetime lifetime, PrinterService& service, OnBack on_back);
  ~ServerGroup();
  ServerGroup(const ServerGroup&) = delete;
  ServerGroup& operator=(const ServerGroup&) = delete;

  // For servers that are added before the group opens. It must outlive them.
  HostListener& Hosts() { return *this; }
  void Add(std::unique_ptr<Server> server) { servers_.push_back(std::move(server)); }

  // Opens all servers or none, unless they are open. Throws std::runtime_error, in words for people, when one of them
  // cannot be opened.
  void Open(PrinterMode mode);

  // `127.0.0.1:9100`, or several of the kind joined by " and ".
  std::string Places(PrinterMode mode) const;

 private:
  void OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, OnClosed on_closed) override;
  void OnOutage(const Outage& outage) override;
  void Return(PrinterMode mode);
  void Close();

  asio::io_context& context_;
  asio::steady_timer outage_;
  const Lifetime lifetime_;
  PrinterService& service_;
  const OnBack on_back_;
  std::vector<std::unique_ptr<Server>> servers_;
  bool is_open_ = false;
  std::string places_;  // Where it was opened.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_SERVER_GROUP_H_
