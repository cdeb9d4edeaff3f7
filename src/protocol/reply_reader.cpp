#include "protocol/reply_reader.h"

#include <algorithm>
#include <limits>

#include "platform/clock.h"
#include "protocol/bytes.h"
#include "protocol/printer_connection.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kSmallReply = 512;  // Larger ones take memory for the time of the call.

void Pause(int64_t milliseconds) {
  constexpr int64_t kLongest = std::numeric_limits<uint32_t>::max();
  platform::SleepMs(static_cast<uint32_t>(std::min(milliseconds, kLongest)));
}

}  // namespace

int32_t ReadReply(VexoPrinterHandle* handle, uint8_t* destination, uint32_t first, uint32_t end, uint32_t* stored,
                  int32_t tries, int64_t pause_ms) {
  const PrinterConnection printer(handle);
  const int32_t check = printer.Check();
  if (check != VEXO_OK) {
    return check;
  }
  if (end < first) {
    return VEXO_ERROR_PARAMETER;
  }
  const uint32_t size = end - first;
  uint8_t small[kSmallReply];
  Bytes large(size > kSmallReply ? size : 0);
  uint8_t* const work = large.empty() ? small : large.data();
  uint32_t total = 0;
  for (int32_t tried = 0;;) {
    uint32_t received = 0;
    const int32_t result = printer.ReadAvailable(work, 0, size, &received);
    // The count may exceed the room, see PrinterConnection.
    const uint32_t copied = std::min({received, size, size - total});
    std::copy_n(work, copied, destination + first + total);
    total += copied;

    const bool failed = result != VEXO_OK && result != VEXO_ERROR_IO_READ_TIMEOUT;
    const bool ended = total > 0 && received == 0;
    if (failed || ended) {
      break;
    }
    if (tried > 0 && pause_ms > 0) {
      Pause(pause_ms);
    }
    if (++tried >= tries) {
      break;
    }
  }
  *stored = total;
  return VEXO_OK;
}

}  // namespace vexo
