#include "monitor/printer_read_helper.h"

#include <algorithm>
#include <mutex>

#include "platform/clock.h"
#include "protocol/checked_printer.h"
#include "vexo/error.h"

namespace {

// The reader checks for a stop request at least this often, however long the polling time is.
constexpr uint32_t kLongestSleepMs = 100;

}  // namespace

bool CVEXOPrinterReadHelper::StartReader() {
  return readerThread.Start([](void* monitor) { static_cast<CVEXOPrinterReadHelper*>(monitor)->ReaderLoop(); }, this);
}

void CVEXOPrinterReadHelper::StopReader() {
  callbacks.RemoveAll();
  flags_ = Flags{/*stopRequested=*/true, /*workOpen=*/false};
  if (readerThread.IsCurrent()) {
    vexo::platform::ThrowDeadlock();
  }
  readerThread.Join();
}

// No exception may leave the thread function: it would terminate the host.
void CVEXOPrinterReadHelper::ReaderLoop() {
  while (!stop_requested()) {
    try {
      PollWhileWorkIsOpen();
    } catch (...) {  // NOLINT(bugprone-empty-catch): out of memory or a host's port; retried in the next pass.
    }
    PauseReader();
  }
}

// Checked again under the lock: a CloseWork in between has dropped all jobs, and none of their events may follow.
void CVEXOPrinterReadHelper::PollWhileWorkIsOpen() {
  if (!work_open()) {
    return;
  }
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  if (work_open()) {
    Poll(0);
  }
}

void CVEXOPrinterReadHelper::PauseReader() const {
  // Compatibility: only the low 32 bits count, unsigned.
  auto left = static_cast<uint32_t>(pollingTime.load());
  do {
    const uint32_t step = std::min(left, kLongestSleepMs);
    vexo::platform::RestMs(step);
    left -= step;
  } while (left > 0 && !stop_requested());
}

int32_t CVEXOPrinterReadHelper::BindPrinter(VexoPrinterHandle* handle) {
  const std::lock_guard<vexo::platform::RecursiveMutex> guard(ioLock);
  const int32_t result = vexo::CheckedPrinter(handle).Check();
  lastResult = result;
  printer = result == VEXO_OK ? handle : nullptr;
  return result;
}
