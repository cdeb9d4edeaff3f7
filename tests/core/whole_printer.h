// Connects the fake drivers to the model of the virtual printer, in virtual time. The connection can be dropped,
// blocked or disturbed at any byte.
#ifndef VEXO_TESTS_CORE_WHOLE_PRINTER_H_
#define VEXO_TESTS_CORE_WHOLE_PRINTER_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

#include "virtual_printer/model/printer_model.h"

namespace vexo::test {

enum class WireFault {
  kNone,
  kDrop,   // The connection is lost; a new one works.
  kStall,  // No byte passes from here on, even over a new connection.
  kNoise   // One byte is altered.
};

enum class WireDirection { kToPrinter, kToHost };

struct WireFaultAt {
  WireFault fault = WireFault::kNone;
  WireDirection direction = WireDirection::kToPrinter;
  size_t position = 0;  // Counts all bytes of this direction, over all connections.
};

// While it exists, ports of every kind are connected to this printer.
class WholePrinter {
 public:
  explicit WholePrinter(WireFaultAt fault = {}, const virtual_printer::PrinterSetup& setup = {});
  ~WholePrinter();
  WholePrinter(const WholePrinter&) = delete;
  WholePrinter& operator=(const WholePrinter&) = delete;

  // Number of bytes sent in this direction.
  size_t Passed(WireDirection direction) const { return passed_[static_cast<size_t>(direction)]; }

  // Completed downloads, in order.
  const std::vector<virtual_printer::Bytes>& Stored() const { return stored_; }

 private:
  int32_t Connect();
  void Disconnect();
  int32_t Receive(const uint8_t* bytes, uint32_t length);
  uint32_t Send(uint8_t* buffer, uint32_t room);
  void HandleEvents(const virtual_printer::PrinterModel::Events& events);
  bool Transmit(WireDirection direction, uint8_t* byte);

  const WireFaultAt fault_;
  std::mutex mutex_;  // A monitor's reader thread reads, too.
  virtual_printer::PrinterModel model_;
  int connection_ = 0;
  bool connected_ = false;
  bool stalled_ = false;
  virtual_printer::Time back_at_;
  struct ByteInTransit {
    uint8_t byte;
    virtual_printer::Time arrives_at;
  };
  std::deque<ByteInTransit> to_host_;
  size_t passed_[2] = {};
  std::vector<virtual_printer::Bytes> stored_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_WHOLE_PRINTER_H_
