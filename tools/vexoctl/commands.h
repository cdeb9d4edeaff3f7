// The command families of vexoctl, each in a file of its own, listed in main.cpp.
//
// A family adds its subcommands to the tool. Their callbacks run once the whole command line has been read; they print
// a result (report.h) or throw a Failure (failure.h). The settings outlive them.
#ifndef VEXOCTL_COMMANDS_H_
#define VEXOCTL_COMMANDS_H_

#include <CLI/CLI.hpp>

#include "vexoctl/settings.h"

namespace vexoctl {

// Name of the option that says which printer a command talks to; a command that talks to one needs it.
inline constexpr char kPortOption[] = "--port";

void AddDownloadCommands(CLI::App& tool, const Settings& settings);
void AddConfigCommands(CLI::App& tool, const Settings& settings);
void AddFeedCommand(CLI::App& tool, const Settings& settings);
void AddMonitorCommand(CLI::App& tool, const Settings& settings);
void AddPortsCommand(CLI::App& tool, const Settings& settings);
void AddPrintCommand(CLI::App& tool, const Settings& settings);
void AddScanCommands(CLI::App& tool, const Settings& settings);
void AddStatusCommand(CLI::App& tool, const Settings& settings);
void AddTaskCommands(CLI::App& tool, const Settings& settings);
void AddUriCommand(CLI::App& tool, const Settings& settings);
void AddUsbCommands(CLI::App& tool, const Settings& settings);
void AddVersionCommand(CLI::App& tool, const Settings& settings);
void AddWidthCommands(CLI::App& tool, const Settings& settings);

}  // namespace vexoctl

#endif  // VEXOCTL_COMMANDS_H_
