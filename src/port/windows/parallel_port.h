// The parallel port ("LPT1"): a device file with blocking I/O, read byte by byte.
#ifndef VEXO_PORT_WINDOWS_PARALLEL_PORT_H_
#define VEXO_PORT_WINDOWS_PARALLEL_PORT_H_

#include <cstdint>

#include "port/windows/file_port.h"

namespace vexo {

class ParallelPort : public FilePort {
 public:
  ParallelPort() : FilePort(Mode::kBlocking) {}

  int32_t Configure(const char* uri) override;
  int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output, uint32_t output_length,
                  uint32_t* returned) override;

 protected:
  int32_t ReadBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) override;
  int32_t ReadAvailableBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) override;

 private:
  // Compatibility: stored for Control; nothing reads it.
  uint8_t status_flag_ = 1;
};

}  // namespace vexo

#endif  // VEXO_PORT_WINDOWS_PARALLEL_PORT_H_
