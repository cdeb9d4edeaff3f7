#include "platform/windows/wait.h"

namespace vexo::platform {

DWORD WaitForHandle(HANDLE handle, DWORD milliseconds) { return WaitForSingleObject(handle, milliseconds); }

}  // namespace vexo::platform
