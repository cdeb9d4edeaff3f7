#include "port/windows/parallel_port.h"

#include <algorithm>

#include "platform/clock.h"
#include "port/bounded_text.h"
#include "port/transfer_pacing.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kShortestPauseMs = 10;
constexpr uint32_t kLongestPauseMs = 100;
constexpr uint32_t kMostPauses = 5;

// Compatibility: ports without a working reverse channel report these errors instead of "no data".
bool MeansNoByte(DWORD error) { return error == ERROR_IO_DEVICE || error == ERROR_INVALID_FUNCTION; }

}  // namespace

int32_t ParallelPort::Configure(const char* uri) {
  DeviceUri parsed;
  const int32_t result = ParseDeviceUri(&parsed, uri);
  if (result != VEXO_OK) {
    return result;
  }
  CopyText(device_path_, sizeof(device_path_), parsed.device);
  SetConfigured(parsed);
  return VEXO_OK;
}

int32_t ParallelPort::Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output,
                              uint32_t output_length, uint32_t* returned) {
  switch (code) {
    case VEXO_CONTROL_PARALLEL_SET_STATUS:
      return SetFlag(input, input_length, &status_flag_);
    case VEXO_CONTROL_PARALLEL_GET_STATUS:
      return GetFlag(status_flag_, output, output_length, returned);
    default:
      return VEXO_ERROR_NOT_IMPLEMENTED;
  }
}

int32_t ParallelPort::ReadBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) {
  const uint32_t budget = TransferBudget(timeouts().readMultiplier, length, timeouts().readConstant);
  const uint32_t pause_ms = std::clamp(budget, kShortestPauseMs, kLongestPauseMs);
  const uint32_t started = platform::TickCount();
  for (uint32_t pauses = 0; *read < length && !IsAborted();) {
    const uint32_t call_started = platform::TickCount();
    const TransferResult result = ReadOnce(bytes + *read, 1);
    *read += result.bytes;
    if (result.error != ERROR_SUCCESS && !MeansNoByte(result.error)) {
      return static_cast<int32_t>(result.error);
    }
    const uint32_t now = platform::TickCount();
    if (*read < length && now - started > budget) {
      return VEXO_ERROR_IO_READ_TIMEOUT;
    }
    if (result.bytes == 0 && now - call_started < kLongestPauseMs) {
      // After the last pause, a port that still returns at once is polled without pauses until the budget ends.
      if (pauses < kMostPauses) {
        ++pauses;
        platform::SleepMs(pause_ms);
      } else {
        platform::YieldThread();
      }
    }
  }
  return VEXO_OK;
}

int32_t ParallelPort::ReadAvailableBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) {
  for (uint32_t call = 0; call < length; ++call) {
    const TransferResult result = ReadOnce(bytes + *read, 1);
    *read += result.bytes;
    if (result.error != ERROR_SUCCESS) {
      return MeansNoByte(result.error) ? VEXO_OK : static_cast<int32_t>(result.error);
    }
    if (*read == 0) {
      break;
    }
  }
  return VEXO_OK;
}

}  // namespace vexo
