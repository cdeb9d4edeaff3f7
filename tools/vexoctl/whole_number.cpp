#include "vexoctl/whole_number.h"

#include <charconv>
#include <string>
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

}  // namespace vexoctl
