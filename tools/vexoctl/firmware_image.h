#ifndef VEXOCTL_FIRMWARE_IMAGE_H_
#define VEXOCTL_FIRMWARE_IMAGE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vexoctl {

// What is wrong with a firmware image.
struct FirmwareFault {
  size_t offset = 0;   // Of the segment that does not fit, in bytes from the beginning of the file.
  std::string reason;  // To be read after "the segment at offset 123 ".
};

// A firmware image: segments back to back, each a header of 76 bytes, which tells the length of the body behind it.
struct FirmwareImage {
  size_t segments = 0;  // Whole ones, from the beginning.
  std::optional<FirmwareFault> fault;
};

// Checks that the segments make up the file to its last byte: a printer that waits for more than the file holds is of
// no use until somebody takes it out of its update mode.
FirmwareImage ExamineFirmwareImage(const uint8_t* data, size_t size);

}  // namespace vexoctl

#endif  // VEXOCTL_FIRMWARE_IMAGE_H_
