#ifndef VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_
#define VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_

#include <asio.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/model/printer_model.h"
#include "virtual_printer/transport/connection.h"
#include "virtual_printer/transport/server.h"
#include "virtual_printer/wire/connection_faults.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// Connects the printer model to its hosts and to real time. Runs in the one thread of its io_context.
class PrinterService : public HostListener, private ConnectionListener {
 public:
  // Called when the printer leaves the network, before connected hosts are dropped.
  using OnOutage = std::function<void(const Outage& outage)>;

  // The references must outlive the service, which must outlive the running of the io_context.
  PrinterService(asio::io_context& context, const PrinterSetup& setup, const ConnectionFaults& faults,
                 DownloadStore& store, Trace& trace, OnOutage on_outage)
      : model_(setup),
        faults_(faults),
        store_(store),
        trace_(trace),
        deadline_(context),
        on_outage_(std::move(on_outage)) {}

  void OnHost(std::unique_ptr<ByteStream> stream, const std::string& from, std::function<void()> on_closed) override;

  // Sends events that the model has not returned for anything received.
  void Send(const PrinterModel::Events& events);

  // Drops all connections.
  void DropAll(const std::string& reason = "dropped");

  PrinterModel& Model() { return model_; }
  const PrinterModel& Model() const { return model_; }

  // May be changed at any time. Answers that are already queued keep their pauses.
  ConnectionFaults& Faults() { return faults_; }
  const ConnectionFaults& Faults() const { return faults_; }

 private:
  struct Host {
    std::shared_ptr<Connection> connection;
    std::function<void()> on_closed;
  };

  void OnReceived(int connection, const std::uint8_t* data, std::size_t size) override;
  void OnHostEnded(int connection) override;
  void OnClosed(int connection) override;
  void Process(const PrinterModel::Events& events);
  void CarryOut(const SideEffects& side_effects);
  void AwaitDeadline();

  PrinterModel model_;
  ConnectionFaults faults_;
  DownloadStore& store_;
  Trace& trace_;
  asio::steady_timer deadline_;
  const OnOutage on_outage_;
  std::map<int, Host> hosts_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_
