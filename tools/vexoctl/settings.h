#ifndef VEXOCTL_SETTINGS_H_
#define VEXOCTL_SETTINGS_H_

#include <cstdint>
#include <optional>
#include <string>

namespace vexoctl {

// How a printer speaks of jobs. The numbers are those of SelectSDKRepintType.
enum class Family : uint32_t {
  kGs = 0,  // GS ( H commands.
  kV1 = 1,
};

// What the options common to all commands say.
struct Settings {
  std::string descriptor;              // Of the printer's port, in the user's ANSI code page, as the library takes it.
  std::optional<uint32_t> time_limit;  // Of each connect, read and write, in milliseconds; else the port's own.
  Family family = Family::kV1;         // Of the printer, for the job monitor.
  bool json = false;                   // Results and failures as JSON objects.

  // The printer as messages name it: the descriptor in UTF-8.
  std::string PrinterName() const;
};

}  // namespace vexoctl

#endif  // VEXOCTL_SETTINGS_H_
