// The subcommands of vexoctl, one file each, listed in main.cpp.
//
// A function adds a subcommand to the tool. Its callback runs once the whole command line has been read; it prints a
// result (report.h) or throws a Failure (failure.h). The options outlive it.
#ifndef VEXOCTL_COMMANDS_COMMANDS_H_
#define VEXOCTL_COMMANDS_COMMANDS_H_

#include <CLI/CLI.hpp>

#include "vexoctl/console/options.h"

namespace vexoctl {

// The option that names the printer. Commands that talk to a printer need it.
inline constexpr char kPortOption[] = "--port";

void AddConfigCommand(CLI::App& tool, const Options& options);
void AddDownloadCommand(CLI::App& tool, const Options& options);
void AddFeedCommand(CLI::App& tool, const Options& options);
void AddMonitorCommand(CLI::App& tool, const Options& options);
void AddPortsCommand(CLI::App& tool, const Options& options);
void AddPrintCommand(CLI::App& tool, const Options& options);
void AddScanCommand(CLI::App& tool, const Options& options);
void AddStatusCommand(CLI::App& tool, const Options& options);
void AddTaskCommand(CLI::App& tool, const Options& options);
void AddUriCommand(CLI::App& tool, const Options& options);
void AddUsbCommand(CLI::App& tool, const Options& options);
void AddVersionCommand(CLI::App& tool, const Options& options);
void AddWidthCommand(CLI::App& tool, const Options& options);

}  // namespace vexoctl

#endif  // VEXOCTL_COMMANDS_COMMANDS_H_
