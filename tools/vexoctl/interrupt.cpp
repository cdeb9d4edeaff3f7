#include "vexoctl/interrupt.h"

#include <windows.h>

#include "vexoctl/failure.h"
#include "vexoctl/news.h"

namespace vexoctl {
namespace {

// Runs on a thread of the system's.
BOOL WINAPI PostInterrupt(DWORD cause) {
  AllNews().Post({});
  if (cause != CTRL_C_EVENT && cause != CTRL_BREAK_EVENT) {
    // The window is being closed: the system ends the process as soon as this returns, or after some seconds. The main
    // thread needs them and ends the process itself.
    Sleep(INFINITE);
  }
  return TRUE;
}

}  // namespace

InterruptWatch::InterruptWatch() {
  if (!SetConsoleCtrlHandler(PostInterrupt, TRUE)) {
    throw Failure("cannot watch for Ctrl-C", static_cast<int32_t>(GetLastError()));
  }
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(PostInterrupt, FALSE); }

}  // namespace vexoctl
