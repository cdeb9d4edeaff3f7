#include "vexoctl/interrupt.h"

#include <windows.h>

#include <atomic>

#include "vexoctl/failure.h"
#include "vexoctl/news.h"

namespace vexoctl {
namespace {

std::atomic<InterruptHandler> current_handler = PostInterrupt;

// Runs on a thread of the system's.
BOOL WINAPI HandleInterrupt(DWORD cause) {
  current_handler.load()();
  if (cause != CTRL_C_EVENT && cause != CTRL_BREAK_EVENT) {
    // The window is being closed: the system ends the process as soon as this returns, or after some seconds. The main
    // thread needs them and ends the process itself.
    Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

void PostInterrupt() { AllNews().Post({}); }

InterruptWatch::InterruptWatch(InterruptHandler handler) {
  current_handler = handler;
  if (!SetConsoleCtrlHandler(HandleInterrupt, TRUE)) {
    throw Failure("cannot watch for Ctrl-C", static_cast<int32_t>(GetLastError()));
  }
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(HandleInterrupt, FALSE); }

}  // namespace vexoctl
