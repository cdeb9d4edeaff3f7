#ifndef VEXOCTL_TASK_NUMBER_H_
#define VEXOCTL_TASK_NUMBER_H_

#include <cstdint>

namespace vexoctl {

// Task numbers travel as four digits; 0 is no task.
inline constexpr uint32_t kLowestTask = 1;
inline constexpr uint32_t kHighestTask = 9999;

}  // namespace vexoctl

#endif  // VEXOCTL_TASK_NUMBER_H_
