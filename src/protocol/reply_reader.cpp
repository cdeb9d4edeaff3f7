#include "protocol/reply_reader.h"

#include <algorithm>
#include <limits>

#include "platform/clock.h"
#include "protocol/bytes.h"
#include "protocol/checked_printer.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kLargestPacket = 64;  // USB ports asked for less keep only the end of a packet.
constexpr uint32_t kSmallReply = 512;    // Larger replies are read into memory from the heap.

void Pause(int64_t milliseconds) {
  constexpr int64_t kLongest = std::numeric_limits<uint32_t>::max();
  platform::SleepMs(static_cast<uint32_t>(std::min(milliseconds, kLongest)));
}

// Receives repeatedly. `receive` performs one receive and returns its result, the number of bytes that arrived and the
// number stored; `wants_more` tells whether there is room for another one.
struct Received {
  int32_t result = VEXO_OK;
  uint32_t brought = 0;
  uint32_t stored = 0;
};

template <typename Receive, typename WantsMore>
uint32_t Collect(int32_t tries, int64_t pause_ms, Receive receive, WantsMore wants_more) {
  uint32_t total = 0;
  for (int32_t tried = 0;;) {
    const Received received = receive(total);
    total += received.stored;
    const bool failed = received.result != VEXO_OK && received.result != VEXO_ERROR_IO_READ_TIMEOUT;
    const bool ended = total > 0 && received.brought == 0;
    if (failed || ended || !wants_more(total)) {
      return total;
    }
    if (tried > 0 && pause_ms > 0) {
      Pause(pause_ms);
    }
    if (++tried >= tries) {
      return total;
    }
  }
}

}  // namespace

int32_t ReadReply(VexoPrinterHandle* handle, uint8_t* destination, uint32_t first, uint32_t end, uint32_t* stored,
                  int32_t tries, int64_t pause_ms) {
  const CheckedPrinter printer(handle);
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
  const auto receive = [&](uint32_t total) {
    Received received;
    received.result = printer.ReadAvailable(work, 0, size, &received.brought);
    // The count may exceed the room; see CheckedPrinter.
    received.stored = std::min({received.brought, size, size - total});
    std::copy_n(work, received.stored, destination + first + total);
    return received;
  };
  *stored = Collect(tries, pause_ms, receive, [](uint32_t /*total*/) { return true; });
  return VEXO_OK;
}

int32_t ReadStream(VexoPrinterHandle* handle, uint8_t* destination, uint32_t size, uint32_t* stored, int32_t tries,
                   int64_t pause_ms) {
  const CheckedPrinter printer(handle);
  const int32_t check = printer.Check();
  if (check != VEXO_OK) {
    return check;
  }
  const auto receive = [&](uint32_t total) {
    Received received;
    received.result = printer.ReadAvailable(destination + total, 0, size - total, &received.brought);
    received.stored = std::min(received.brought, size - total);
    return received;
  };
  *stored = Collect(tries, pause_ms, receive, [=](uint32_t total) { return size - total >= kLargestPacket; });
  return VEXO_OK;
}

}  // namespace vexo
