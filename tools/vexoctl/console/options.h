#ifndef VEXOCTL_CONSOLE_OPTIONS_H_
#define VEXOCTL_CONSOLE_OPTIONS_H_

#include <chrono>
#include <optional>
#include <string>

#include "vexo/printer.hpp"
#include "vexoctl/console/text.h"

namespace vexoctl {

// The options common to all commands.
struct Options {
  std::string descriptor;                               // The printer's port, in the user's ANSI code page.
  std::optional<std::chrono::milliseconds> time_limit;  // Of each connect, read and write; else the port's own.
  vexo::JobMonitor::Family family = vexo::JobMonitor::Family::kV1;
  bool json = false;  // Print results and failures as JSON objects.

  // The printer's name in messages: the descriptor in UTF-8.
  std::string PrinterName() const { return Utf8FromAnsi(descriptor); }
};

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_OPTIONS_H_
