// Received bytes that are not decoded yet.
#ifndef VEXO_MONITOR_RECEIVE_BUFFER_H_
#define VEXO_MONITOR_RECEIVE_BUFFER_H_

#include <cstddef>
#include <cstdint>

#include "protocol/bytes.h"

namespace vexo {

// Consume only advances an offset; Reserve moves the rest to the front. Decoding many small reports therefore costs no
// more than decoding a single one, and an export called from a callback may receive and decode in between.
class ReceiveBuffer {
 public:
  const uint8_t* data() const { return bytes_.data() + consumed_; }
  size_t size() const { return bytes_.size() - consumed_; }

  // Drops the consumed bytes and makes room for an Append of `count` bytes, so that it cannot fail.
  void Reserve(size_t count) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(consumed_));
    consumed_ = 0;
    bytes_.reserve(bytes_.size() + count);
  }

  void Append(const uint8_t* bytes, size_t count) { bytes_.insert(bytes_.end(), bytes, bytes + count); }

  void Consume(size_t count) { consumed_ += count; }

  // Undoes the latest Consume. Reserve must not have been called since.
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
