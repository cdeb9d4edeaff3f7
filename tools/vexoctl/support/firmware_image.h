#ifndef VEXOCTL_SUPPORT_FIRMWARE_IMAGE_H_
#define VEXOCTL_SUPPORT_FIRMWARE_IMAGE_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vexoctl {

// What is wrong with a firmware image.
struct FirmwareFault {
  size_t offset = 0;   // Of the segment that does not fit, from the beginning of the file.
  std::string reason;  // Printed behind "the segment at offset 123 ".
};

// A firmware image: segments back to back, each a header of 76 bytes that has the length of the body behind it.
struct FirmwareImage {
  size_t segments = 0;  // Complete ones, from the beginning.
  std::optional<FirmwareFault> fault;
};

// Checks that the segments make up the whole file: a printer that waits for more than the file holds stays in its
// update mode.
FirmwareImage ExamineFirmwareImage(std::string_view content);

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_FIRMWARE_IMAGE_H_
