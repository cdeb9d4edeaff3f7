#include "vexoctl/console/interrupt.h"

#include <windows.h>

#include <atomic>

#include "vexoctl/console/failure.h"

namespace vexoctl {
namespace {

std::atomic<InterruptHandler> current_handler = nullptr;

BOOL WINAPI HandleInterrupt(DWORD cause) {
  current_handler.load()();
  if (cause != CTRL_C_EVENT && cause != CTRL_BREAK_EVENT) {
    // The window is being closed: the system ends the process when this returns, or some seconds later. The main thread
    // needs that time and ends the process itself.
    Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

InterruptWatch::InterruptWatch(InterruptHandler handler) {
  current_handler = handler;
  if (!SetConsoleCtrlHandler(HandleInterrupt, TRUE)) {
    throw Failure("cannot handle Ctrl-C", static_cast<int32_t>(GetLastError()));
  }
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(HandleInterrupt, FALSE); }

}  // namespace vexoctl
