// Bytes received and not yet decoded.
#ifndef VEXO_MONITOR_RECEIVE_BUFFER_H_
#define VEXO_MONITOR_RECEIVE_BUFFER_H_

#include <cstddef>
#include <cstdint>

#include "protocol/bytes.h"

namespace vexo {

// Consuming only moves a mark; the rest is moved to the front once per Reserve. So decoding costs no more for
// many small reports than for one, and an export that is called inside a callback may receive and decode in between.
class ReceiveBuffer {
 public:
  const uint8_t* data() const { return bytes_.data() + consumed_; }
  size_t size() const { return bytes_.size() - consumed_; }

  // Drops what was consumed and makes room for an Append of `count` bytes, so that it cannot fail.
  void Reserve(size_t count) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(consumed_));
    consumed_ = 0;
    bytes_.reserve(bytes_.size() + count);
  }

  void Append(const uint8_t* bytes, size_t count) { bytes_.insert(bytes_.end(), bytes, bytes + count); }

  void Consume(size_t count) { consumed_ += count; }

  // Takes the latest Consume back. Nothing may have been reserved since.
  void PutBack(size_t count) { consumed_ -= count; }

  void Clear() {
    bytes_.clear();
    consumed_ = 0;
  }

 private:
  Bytes bytes_;
  size_t consumed_ = 0;
};

}  // namespace vexo

#endif  // VEXO_MONITOR_RECEIVE_BUFFER_H_
