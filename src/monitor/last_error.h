// The latest failure of a job monitor function, for GetLastErrorCode.
#ifndef VEXO_MONITOR_LAST_ERROR_H_
#define VEXO_MONITOR_LAST_ERROR_H_

#include <cstdint>

namespace vexo {

// Compatibility: one value for the whole process, overwritten by any thread; hosts read failures of other threads with
// it.
int32_t LastErrorCode();
void StoreLastErrorCode(int32_t code);

}  // namespace vexo

#endif  // VEXO_MONITOR_LAST_ERROR_H_
