#include "port/buffer_port.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kFirstCapacity = 2048;

}  // namespace

int32_t BufferPort::Open() {
  std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[kFirstCapacity]);
  if (bytes == nullptr) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
  const std::lock_guard<platform::Mutex> guard(mutex_);
  bytes_ = std::move(bytes);
  capacity_ = kFirstCapacity;
  fill_ = 0;
  return VEXO_OK;
}

int32_t BufferPort::Close() {
  const std::lock_guard<platform::Mutex> guard(mutex_);
  bytes_.reset();
  capacity_ = 0;
  fill_ = 0;
  return VEXO_OK;
}

int32_t BufferPort::CheckOpen() {
  const std::lock_guard<platform::Mutex> guard(mutex_);
  fill_ = 0;
  return VEXO_OK;
}

int32_t BufferPort::Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  const std::lock_guard<platform::Mutex> guard(mutex_);
  if (capacity_ - fill_ < length) {
    if (length > std::numeric_limits<uint32_t>::max() - fill_) {
      return VEXO_ERROR_OUT_OF_MEMORY;
    }
    const int32_t result = Grow(fill_ + length);
    if (result != VEXO_OK) {
      return result;
    }
  }
  if (length > 0) {
    std::memcpy(bytes_.get() + fill_, buffer + offset, length);
  }
  fill_ += length;
  *written = length;
  return VEXO_OK;
}

// Grows by half, so that a job written in small pieces is copied only a few times.
int32_t BufferPort::Grow(uint32_t needed) {
  const uint64_t half_more = uint64_t{capacity_} + capacity_ / 2;
  const uint32_t limit = std::numeric_limits<uint32_t>::max();
  const uint32_t capacity = std::max(needed, static_cast<uint32_t>(std::min<uint64_t>(half_more, limit)));
  std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[capacity]);
  if (bytes == nullptr) {
    return VEXO_ERROR_OUT_OF_MEMORY;
  }
  if (fill_ > 0) {
    std::memcpy(bytes.get(), bytes_.get(), fill_);
  }
  bytes_ = std::move(bytes);
  capacity_ = capacity;
  return VEXO_OK;
}

int32_t BufferPort::Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  const std::lock_guard<platform::Mutex> guard(mutex_);
  if (fill_ == 0) {
    return VEXO_OK;
  }
  if (length < offset || length - offset < fill_) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer + offset, bytes_.get(), fill_);
  *read = fill_;
  return VEXO_OK;
}

int32_t BufferPort::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  return Read(buffer, from, to, read);
}

}  // namespace vexo
