#ifndef VEXOCTL_TIME_OF_DAY_H_
#define VEXOCTL_TIME_OF_DAY_H_

#include <chrono>
#include <string>

namespace vexoctl {

// The user's time, "14:03:27.512".
std::string TimeOfDay(std::chrono::system_clock::time_point time);

}  // namespace vexoctl

#endif  // VEXOCTL_TIME_OF_DAY_H_
