#include "vexoctl/console/values.h"

#include <charconv>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace vexoctl {

CLI::Validator WholeNumber(uint32_t lowest, uint32_t highest) {
  const std::string range = std::to_string(lowest) + ".." + std::to_string(highest);
  return CLI::Validator(
      [=](std::string& text) {
        uint32_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [parsed_to, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || parsed_to != end || number < lowest || number > highest) {
          return "'" + text + "' is not a whole number in " + range;
        }
        text = std::to_string(number);
        return std::string();
      },
      /*validator_desc=*/"");
}

std::string ValueText(uint32_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08X (%u)", static_cast<unsigned>(value), static_cast<unsigned>(value));
  return text;
}

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
