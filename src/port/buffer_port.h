// The in-memory port: what is written can be read back, as often as wanted. Hosts collect a job in it.
#ifndef VEXO_PORT_BUFFER_PORT_H_
#define VEXO_PORT_BUFFER_PORT_H_

#include <cstdint>
#include <memory>

#include "platform/mutex.h"
#include "port/port_driver.h"

namespace vexo {

// Safe to close while another thread writes or reads.
class BufferPort : public PortDriver {
 public:
  // Starts with an empty buffer of 2048 bytes. -9: no memory; what was there stays.
  int32_t Open() override;
  int32_t Close() override;

  // Empties the buffer: hosts use it as "start a new job".
  int32_t CheckOpen() override;

  // Appends. -9: no memory; the content stays.
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;

  // Both copy the whole content and leave it in place. The room is the difference of the two numbers for both, so for
  // Read it is length - offset, a simplification that hosts of buffer ports count on. -2: no room for all of it.
  int32_t Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) override;

 private:
  int32_t Grow(uint32_t needed);

  platform::Mutex mutex_;
  std::unique_ptr<uint8_t[]> bytes_;
  uint32_t capacity_ = 0;
  uint32_t fill_ = 0;
};

}  // namespace vexo

#endif  // VEXO_PORT_BUFFER_PORT_H_
