// vexoctl, the command-line tool: reads and changes printers through vexoextend.dll.
//
// Exit status: 0 success, 1 the operation failed, 2 the command line is wrong.

#include <chrono>
#include <cstdint>
#include <new>
#include <sstream>
#include <string>

#include "vexo/error.h"
#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/options.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/console/values.h"

namespace vexoctl {
namespace {

constexpr int kSuccess = 0;
constexpr int kOperationFailed = 1;
constexpr int kUsageError = 2;

// Not 0, which a network port takes for "no limit".
constexpr uint32_t kShortestTimeLimitMs = 1;
constexpr uint32_t kLongestTimeLimitMs = 3600000;

constexpr char kDescriptorHelp[] =
    "A DESCRIPTOR names the port of a printer:\n"
    "  NET,192.168.1.100            network, TCP port 9100\n"
    "  NET,192.168.1.100,9101       network, another TCP port\n"
    "  USB                          the first USB printer\n"
    "  USB,USB001                   the USB printer at this printer port\n"
    "  USB,VID_0X1A2B,PID_0X0001    the USB printer with these identifiers\n"
    "  COM3,9600                    serial line; speed, then optionally parity (n),\n"
    "  COM3,115200,e,7,2,x          data bits (8), stop bits (1), flow control (n)\n"
    "  LPT1                         parallel port\n"
    "  BT,001122334455,8642         Bluetooth: address, PIN\n"
    "  BUF                          memory, without a printer\n"
    "  vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100\n"
    "                               device URI, to which all others are converted\n"
    "\n"
    "Examples:\n"
    "  vexoctl -p NET,192.168.1.100 width get\n"
    "  vexoctl -p NET,192.168.1.100 --timeout 500 width set 640\n"
    "  vexoctl -p NET,192.168.1.100 print receipt.bin --task 7 --wait\n"
    "  vexoctl -p NET,192.168.1.100 monitor\n"
    "  vexoctl -p NET,192.168.1.100 download file logo.bin\n"
    "  vexoctl --json uri COM3,9600\n"
    "  vexoctl ports\n"
    "  vexoctl scan pos\n"
    "  vexoctl usb watch\n"
    "\n"
    "Results go to the standard output, failures to the standard error output.\n"
    "Exit status: 0 success, 1 the operation failed, 2 the command line is wrong.";

constexpr void (*kCommands[])(CLI::App& tool, const Options& options) = {
    AddWidthCommand,   AddStatusCommand,   AddFeedCommand,    AddTaskCommand, AddPrintCommand,
    AddMonitorCommand, AddDownloadCommand, AddUriCommand,     AddUsbCommand,  AddPortsCommand,
    AddScanCommand,    AddConfigCommand,   AddVersionCommand,
};

std::string FamilyError(const std::string& name) {
  return name == "v1" || name == "gs" ? "" : "'" + name + "' is neither v1 nor gs";
}

void AddCommonOptions(CLI::App& tool, Options& options) {
  tool.add_option(std::string("-p,") + kPortOption, options.descriptor, "Port descriptor or device URI of the printer")
      ->type_name("DESCRIPTOR");
  tool.add_option_function<uint32_t>(
          "--timeout", [&options](uint32_t limit) { options.time_limit = std::chrono::milliseconds(limit); },
          "Time limit of each connect, read and write in milliseconds; default: the port's own")
      ->transform(WholeNumber(kShortestTimeLimitMs, kLongestTimeLimitMs))
      ->type_name("MS");
  tool.add_option_function<std::string>(
          "--family",
          [&options](const std::string& name) {
            options.family = name == "gs" ? vexo::JobMonitor::Family::kGs : vexo::JobMonitor::Family::kV1;
          },
          "Protocol family for print jobs: v1, or gs for GS ( H commands; default: v1")
      ->check(CLI::Validator(FamilyError, /*validator_desc=*/""))
      ->type_name("v1|gs");
  tool.add_flag("--json", options.json, "Print the result, or the failure, as a JSON object");
}

// Names a mistyped command: the plain message is only "A subcommand is required".
std::string UsageErrorMessage(const CLI::App* app, const CLI::Error& error) {
  std::string message = "vexoctl: " + CLI::FailureMessage::simple(app, error);
  const bool lacks_command = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (lacks_command && !app->remaining(true).empty()) {
    message = "vexoctl: " + app->remaining(true).front() + " is not known here\n" + message;
  }
  return message;
}

int PrintHelpOrError(const CLI::App& tool, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = tool.exit(error, out, err);
  WriteOutput(Utf8FromAnsi(out.str()));
  WriteError(Utf8FromAnsi(err.str()));
  return status == 0 ? kSuccess : kUsageError;  // Help is an "error" with status 0.
}

int ReadCommandLineAndRun(int argc, char** argv, Options& options) {
  CLI::App tool("Reads and changes receipt and label printers.", "vexoctl");
  tool.require_subcommand(1);
  tool.allow_windows_style_options(false);  // File names may begin with a slash.
  tool.fallthrough();                       // Common options are also accepted behind a command.
  tool.footer(kDescriptorHelp);
  tool.failure_message(UsageErrorMessage);
  AddCommonOptions(tool, options);
  for (const auto add_command : kCommands) {
    add_command(tool, options);
  }
  try {
    tool.parse(argc, argv);
    return kSuccess;
  } catch (const CLI::ParseError& error) {
    return PrintHelpOrError(tool, error);
  }
}

int Run(int argc, char** argv) {
  Options options;
  try {
    return ReadCommandLineAndRun(argc, argv, options);
  } catch (const Failure& failure) {
    PrintFailure(failure, options);
  } catch (const std::bad_alloc&) {
    PrintFailure(Failure("cannot go on", VEXO_ERROR_OUT_OF_MEMORY), options);
  }
  return kOperationFailed;
}

}  // namespace
}  // namespace vexoctl

int main(int argc, char** argv) { return vexoctl::Run(argc, argv); }
