#ifndef VEXOCTL_SETTINGS_H_
#define VEXOCTL_SETTINGS_H_

#include <cstdint>
#include <optional>
#include <string>

namespace vexoctl {

// What the options common to all commands say.
struct Settings {
  std::string descriptor;              // Of the printer's port, in the user's ANSI code page, as the library takes it.
  std::optional<uint32_t> time_limit;  // Of each connect, read and write, in milliseconds; else the port's own.
  bool json = false;                   // Results and failures as JSON objects.
};

}  // namespace vexoctl

#endif  // VEXOCTL_SETTINGS_H_
