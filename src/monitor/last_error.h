// The result of the latest job monitor function, for hosts that ask afterwards what went wrong.
#ifndef VEXO_MONITOR_LAST_ERROR_H_
#define VEXO_MONITOR_LAST_ERROR_H_

#include <cstdint>

namespace vexo {

// One value for the whole process: a call on another thread overwrites it, and hosts rely on reading any thread's.
int32_t LastErrorCode();
void StoreLastErrorCode(int32_t code);

}  // namespace vexo

#endif  // VEXO_MONITOR_LAST_ERROR_H_
