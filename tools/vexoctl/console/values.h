// Numbers and times as users type and read them.
#ifndef VEXOCTL_CONSOLE_VALUES_H_
#define VEXOCTL_CONSOLE_VALUES_H_

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <string>

namespace vexoctl {

// Accepts a decimal number of a range on the command line. Drops leading zeros, because the option's own conversion
// would take "0640" for an octal number.
CLI::Validator WholeNumber(uint32_t lowest, uint32_t highest);

// A value of the printer whose bits have a meaning, "0x0000001F (31)".
std::string ValueText(uint32_t value);

// Local time, "14:03:27.512".
std::string TimeOfDay(std::chrono::system_clock::time_point time);

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_VALUES_H_
