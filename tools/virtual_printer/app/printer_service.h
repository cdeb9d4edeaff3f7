#ifndef VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_
#define VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_

#include <asio.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "virtual_printer/downloads/download_store.h"
#include "virtual_printer/model/printer_model.h"
#include "virtual_printer/transport/byte_stream.h"
#include "virtual_printer/transport/connection.h"
#include "virtual_printer/wire/faults.h"
#include "virtual_printer/wire/trace.h"

namespace virtual_printer {

// Whoever lets hosts connect.
class OutageListener {
 public:
  // Connected hosts are still to be dropped.
  virtual void OnOutage(const Outage& outage) = 0;

 protected:
  ~OutageListener() = default;
};

// Joins the printer model to its hosts and to the passing of time. Belongs to the one thread of the io_context.
class PrinterService : private ConnectionListener {
 public:
  // The references must outlive the service, which must outlive the running of the io_context.
  PrinterService(asio::io_context& context, const PrinterSetup& setup, const Faults& faults, DownloadStore& store,
                 Trace& trace)
      : model_(setup), faults_(faults), store_(store), trace_(trace), deadline_(context) {}

  // Null for none. The listener must outlive the running of the io_context.
  void SetOutageListener(OutageListener* listener) { outage_listener_ = listener; }

  // A host has connected.
  void Serve(std::unique_ptr<ByteStream> stream, const std::string& from, std::function<void()> on_closed);

  // Sends what the model gave unasked.
  void Send(const PrinterModel::Events& events);

  // Ends all connections.
  void DropAll(const std::string& why = "dropped");

  PrinterModel& Model() { return model_; }

  // May be changed; what is already on its way keeps its pauses.
  Faults& CurrentFaults() { return faults_; }

 private:
  struct Host {
    std::shared_ptr<Connection> connection;
    std::function<void()> on_closed;
  };

  void OnReceived(int connection, const std::uint8_t* data, std::size_t size) override;
  void OnHostEnded(int connection) override;
  void OnClosed(int connection) override;
  void CarryOut(const PrinterModel::Events& events);
  void CarryOut(const PrinterOrders& orders);
  void AwaitDeadline();

  PrinterModel model_;
  Faults faults_;
  DownloadStore& store_;
  Trace& trace_;
  asio::steady_timer deadline_;
  std::map<int, Host> hosts_;
  OutageListener* outage_listener_ = nullptr;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_PRINTER_SERVICE_H_
