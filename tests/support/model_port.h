// A port object supplied by a host, connected to the model of the virtual printer. Transfers are synchronous: they run
// on the caller's thread and take no time.
#ifndef VEXO_TESTS_SUPPORT_MODEL_PORT_H_
#define VEXO_TESTS_SUPPORT_MODEL_PORT_H_

#include <algorithm>
#include <cstdint>
#include <deque>
#include <mutex>

#include "vexo/error.h"
#include "vexo/printer.h"
#include "virtual_printer/model/printer_model.h"

namespace vexo::test {

class ModelPort : public VexoPort {
 public:
  explicit ModelPort(const virtual_printer::PrinterSetup& setup = {}) : VexoPort(), model_(setup) {
    magic = VEXO_PORT_MAGIC;
    kind = VEXO_PORT_NET;
    model_.Connect(kConnection);
    VexoPort::Close = [](VexoPort* /*port*/) -> int32_t { return VEXO_OK; };
    VexoPort::Write = [](VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
      *written = length;
      static_cast<ModelPort*>(port)->Receive(buffer + offset, length);
      return int32_t{VEXO_OK};
    };
    VexoPort::Read = [](VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
      *read = static_cast<ModelPort*>(port)->Send(buffer + offset, length);
      return int32_t{*read < length ? VEXO_ERROR_IO_READ_TIMEOUT : VEXO_OK};
    };
    VexoPort::ReadAvailable = [](VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
      *read = static_cast<ModelPort*>(port)->Send(buffer + from, to - from);
      return int32_t{VEXO_OK};
    };
  }

 private:
  static constexpr int kConnection = 1;

  void Receive(const uint8_t* bytes, uint32_t length) {
    const std::lock_guard<std::mutex> guard(mutex_);
    QueueReplies(model_.Receive(kConnection, bytes, length, now_));
    static_cast<void>(model_.TakeSideEffects());
  }

  // Each read advances the printer's clock by 100 ms, so that delayed replies become due.
  uint32_t Send(uint8_t* buffer, uint32_t room) {
    const std::lock_guard<std::mutex> guard(mutex_);
    now_ += std::chrono::milliseconds(100);
    QueueReplies(model_.Advance(now_));
    const auto count = static_cast<uint32_t>(std::min<size_t>(room, to_host_.size()));
    std::copy_n(to_host_.begin(), count, buffer);
    to_host_.erase(to_host_.begin(), to_host_.begin() + count);
    return count;
  }

  void QueueReplies(const virtual_printer::PrinterModel::Events& events) {
    for (const virtual_printer::WireEvent& event : events) {
      if (event.direction == virtual_printer::WireEvent::Direction::kSent) {
        to_host_.insert(to_host_.end(), event.message.bytes.begin(), event.message.bytes.end());
      }
    }
  }

  std::mutex mutex_;  // A monitor's reader thread reads, too.
  virtual_printer::PrinterModel model_;
  virtual_printer::Time now_;
  std::deque<uint8_t> to_host_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_MODEL_PORT_H_
