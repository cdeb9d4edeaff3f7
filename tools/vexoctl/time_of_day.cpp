#include "vexoctl/time_of_day.h"

#include <cstdio>
#include <ctime>

namespace vexoctl {

std::string TimeOfDay(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  const auto since_epoch = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
  std::tm local = {};
  localtime_s(&local, &seconds);
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>(since_epoch.count() % 1000));
  return text;
}

}  // namespace vexoctl
