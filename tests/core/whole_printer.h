// A whole virtual printer behind the fake drivers, in virtual time, and a wire between the two that can be cut, blocked
// or disturbed at any byte.
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
  kStall,  // Nothing passes from here on, whatever is done.
  kNoise   // One byte arrives as another.
};

enum class WireDirection { kToPrinter, kToHost };

// Where the wire is at fault.
struct WireFaultAt {
  WireFault fault = WireFault::kNone;
  WireDirection direction = WireDirection::kToPrinter;
  size_t position = 0;  // In all bytes of this direction, whichever connection brings them.
};

// The only printer there is, for every kind of port, while it lives.
class WholePrinter {
 public:
  explicit WholePrinter(WireFaultAt fault = {}, const virtual_printer::PrinterSetup& setup = {});
  ~WholePrinter();
  WholePrinter(const WholePrinter&) = delete;
  WholePrinter& operator=(const WholePrinter&) = delete;

  // Bytes that have entered the wire.
  size_t Passed(WireDirection direction) const { return passed_[static_cast<size_t>(direction)]; }

  // What downloads have brought, in their order.
  const std::vector<virtual_printer::Bytes>& Stored() const { return stored_; }

 private:
  int32_t Connect();
  void Disconnect();
  int32_t Receive(const uint8_t* bytes, uint32_t length);
  uint32_t Send(uint8_t* buffer, uint32_t room);
  void TakeIn(const virtual_printer::PrinterModel::Events& events);
  bool Carry(WireDirection direction, uint8_t* byte);

  const WireFaultAt fault_;
  std::mutex mutex_;  // The reader thread of a monitor listens, too.
  virtual_printer::PrinterModel model_;
  int connection_ = 0;
  bool connected_ = false;
  bool stalled_ = false;
  virtual_printer::Time back_at_;
  struct ByteUnderway {
    uint8_t byte;
    virtual_printer::Time arrives_at;
  };
  std::deque<ByteUnderway> to_host_;
  size_t passed_[2] = {};
  std::vector<virtual_printer::Bytes> stored_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_WHOLE_PRINTER_H_
