// Waiting for a kernel object. Part of the clock's seam: tests with a virtual clock replace it, too.
#ifndef VEXO_PLATFORM_WINDOWS_WAIT_H_
#define VEXO_PLATFORM_WINDOWS_WAIT_H_

#include <windows.h>

namespace vexo::platform {

// As WaitForSingleObject: WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED with GetLastError set.
DWORD WaitForHandle(HANDLE handle, DWORD milliseconds);

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_WAIT_H_
