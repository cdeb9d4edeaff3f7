// The in-memory port: its content can be read any number of times. Hosts collect a job in it.
#ifndef VEXO_PORT_BUFFER_PORT_H_
#define VEXO_PORT_BUFFER_PORT_H_

#include <cstdint>
#include <memory>

#include "platform/mutex.h"
#include "port/port_driver.h"

namespace vexo {

// May be closed while another thread writes or reads.
class BufferPort : public PortDriver {
 public:
  // Allocates an empty buffer of 2048 bytes. Returns VEXO_ERROR_OUT_OF_MEMORY, with the old content unchanged.
  int32_t Open() override;
  int32_t Close() override;

  // Compatibility: empties the buffer; hosts call this to start a new job.
  int32_t CheckOpen() override;

  // Appends. Returns VEXO_ERROR_OUT_OF_MEMORY, with the content unchanged.
  int32_t Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) override;

  // Compatibility: both copy the whole content and keep it. Both take the room to be the difference of their two
  // numbers, which for Read is length - offset; hosts of buffer ports rely on it. Return VEXO_ERROR_BUFFER_TOO_SMALL
  // when the content does not fit.
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
