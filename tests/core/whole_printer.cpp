#include "core/whole_printer.h"

#include <chrono>

#include "platform/clock.h"
#include "support/allocation_faults.h"
#include "support/scripted_drivers.h"
#include "support/virtual_clock.h"
#include "vexo/error.h"

namespace vexo::test {
namespace {

using virtual_printer::PrinterModel;
using virtual_printer::Time;

constexpr int32_t kConnectionReset = 10054;
constexpr uint32_t kReadTimeMs = 100;      // Duration of a read without data.
constexpr uint32_t kConnectTimeMs = 3000;  // Limit for the printer to accept a connection.

Time Now() { return Time(std::chrono::milliseconds(platform::TickCount())); }

}  // namespace

WholePrinter::WholePrinter(WireFaultAt fault, const virtual_printer::PrinterSetup& setup)
    : fault_(fault), model_(setup) {
  SetClock(0);
  DriverScript script;
  script.on_open = [this] {
    const UncountedAllocations uncounted;
    const std::lock_guard<std::mutex> guard(mutex_);
    return Connect();
  };
  script.on_write = [this](const uint8_t* bytes, uint32_t length) {
    const std::lock_guard<std::mutex> guard(mutex_);
    return Receive(bytes, length);
  };
  script.on_read = [this](uint8_t* buffer, uint32_t room) {
    const std::lock_guard<std::mutex> guard(mutex_);
    return Send(buffer, room);
  };
  SetDriverScript(script);
}

WholePrinter::~WholePrinter() { SetDriverScript({}); }

int32_t WholePrinter::Connect() {
  const uint64_t deadline = platform::TickCount() + kConnectTimeMs;
  while (Now() < back_at_ && platform::TickCount() < deadline) {
    AdvanceClock(kReadTimeMs);
  }
  if (stalled_ || Now() < back_at_) {
    return VEXO_ERROR_IO_OPEN_FAILED;
  }
  Disconnect();
  model_.Connect(++connection_);
  connected_ = true;
  return VEXO_OK;
}

void WholePrinter::Disconnect() {
  if (connected_) {
    connected_ = false;
    HandleEvents(model_.Disconnect(connection_, Now()));
  }
  to_host_.clear();
}

int32_t WholePrinter::Receive(const uint8_t* bytes, uint32_t length) {
  virtual_printer::Bytes arrived;
  for (const uint8_t* byte = bytes; byte < bytes + length; ++byte) {
    uint8_t carried = *byte;
    if (Transmit(WireDirection::kToPrinter, &carried)) {
      arrived.push_back(carried);
    }
  }
  if (!connected_) {
    return kConnectionReset;
  }
  const bool all_arrived = arrived.size() == length;
  HandleEvents(model_.Receive(connection_, arrived.data(), arrived.size(), Now()));
  return all_arrived ? VEXO_OK : VEXO_ERROR_IO_WRITE_TIMEOUT;
}

uint32_t WholePrinter::Send(uint8_t* buffer, uint32_t room) {
  const auto has_arrived = [this] { return !to_host_.empty() && to_host_.front().arrives_at <= Now(); };
  HandleEvents(model_.Advance(Now()));
  if (!has_arrived()) {
    AdvanceClock(kReadTimeMs);
    HandleEvents(model_.Advance(Now()));
  }
  uint32_t sent = 0;
  for (; sent < room && has_arrived(); ++sent) {
    buffer[sent] = to_host_.front().byte;
    to_host_.pop_front();
  }
  return sent;
}

void WholePrinter::HandleEvents(const PrinterModel::Events& events) {
  for (const virtual_printer::WireEvent& event : events) {
    if (event.direction == virtual_printer::WireEvent::Direction::kSent && connected_) {
      for (uint8_t byte : event.message.bytes) {
        if (Transmit(WireDirection::kToHost, &byte)) {
          to_host_.push_back({byte, Now() + event.message.pause});
        }
      }
    }
  }
  const virtual_printer::SideEffects side_effects = model_.TakeSideEffects();
  for (const auto& completed : side_effects.completed) {
    stored_.push_back(completed.download.data);
  }
  if (side_effects.outage) {
    back_at_ = Now() + side_effects.outage->duration;
  }
  if (side_effects.outage || !side_effects.dropped.empty()) {
    Disconnect();
  }
}

// Applies the fault to the byte. @return whether it arrives.
bool WholePrinter::Transmit(WireDirection direction, uint8_t* byte) {
  const size_t position = passed_[static_cast<size_t>(direction)]++;
  if (direction == fault_.direction && position == fault_.position) {
    if (fault_.fault == WireFault::kNoise) {
      *byte ^= 0x55;
    } else if (fault_.fault == WireFault::kDrop) {
      connected_ = false;
      model_.Disconnect(connection_, Now());
      to_host_.clear();
    } else if (fault_.fault == WireFault::kStall) {
      stalled_ = true;
    }
  }
  return connected_ && !stalled_;
}

}  // namespace vexo::test
