// vexoctl, the technician's tool: reads and changes printers through vexoextend.dll.
//
// Exit status: 0 success, 1 the operation failed, 2 the command line is wrong.

#include <cstdint>
#include <new>
#include <sstream>
#include <string>

#include "vexo/error.h"
#include "vexoctl/commands.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"
#include "vexoctl/report.h"
#include "vexoctl/settings.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

constexpr int kSuccess = 0;
constexpr int kOperationFailed = 1;
constexpr int kUsageError = 2;

// Not 0, which means "no limit" to a network port.
constexpr uint32_t kShortestTimeLimit = 1;
constexpr uint32_t kLongestTimeLimit = 3600000;

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
    "                               device URI, to which all others are turned\n"
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
    "Results go to the standard output, failures to the standard error stream.\n"
    "Exit status: 0 success, 1 the operation failed, 2 the command line is wrong.";

constexpr void (*kCommandFamilies[])(CLI::App& tool, const Settings& settings) = {
    AddWidthCommands,  AddStatusCommand,    AddFeedCommand,    AddTaskCommands, AddPrintCommand,
    AddMonitorCommand, AddDownloadCommands, AddUriCommand,     AddUsbCommands,  AddPortsCommand,
    AddScanCommands,   AddConfigCommands,   AddVersionCommand,
};

std::string FamilyNameError(const std::string& name) {
  return name == "v1" || name == "gs" ? "" : "'" + name + "' is neither v1 nor gs";
}

Family FamilyNamed(const std::string& name) { return name == "gs" ? Family::kGs : Family::kV1; }

void AddCommonOptions(CLI::App& tool, Settings& settings) {
  tool.add_option(std::string("-p,") + kPortOption, settings.descriptor, "Port descriptor or device URI of the printer")
      ->type_name("DESCRIPTOR");
  tool.add_option("--timeout", settings.time_limit,
                  "Time limit of each connect, read and write in milliseconds; default: the port's own")
      ->transform(WholeNumber(kShortestTimeLimit, kLongestTimeLimit))
      ->type_name("MS");
  tool.add_option_function<std::string>(
          "--family", [&settings](const std::string& name) { settings.family = FamilyNamed(name); },
          "How the printer speaks of jobs: v1, or gs for GS ( H commands; default: v1")
      ->check(CLI::Validator(FamilyNameError, /*validator_desc=*/""))
      ->type_name("v1|gs");
  tool.add_flag("--json", settings.json, "Print the result, or the failure, as a JSON object");
}

// For the user who mistyped a command, the plain "A subcommand is required" would be a riddle.
std::string UsageErrorMessage(const CLI::App* app, const CLI::Error& error) {
  std::string message = "vexoctl: " + CLI::FailureMessage::simple(app, error);
  const bool lacks_command = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
  if (lacks_command && !app->remaining(true).empty()) {
    message = "vexoctl: " + app->remaining(true).front() + " is not known here\n" + message;
  }
  return message;
}

int AnswerCommandLine(const CLI::App& tool, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream err;
  const int status = tool.exit(error, out, err);
  WriteOutput(Utf8FromAnsi(out.str()));
  WriteError(Utf8FromAnsi(err.str()));
  return status == 0 ? kSuccess : kUsageError;  // A request for help arrives here, too.
}

int ReadCommandLineAndRun(int argc, char** argv, Settings& settings) {
  CLI::App tool("Reads and changes receipt and label printers.", "vexoctl");
  tool.require_subcommand(1);
  tool.allow_windows_style_options(false);  // A file name may begin with a slash.
  tool.fallthrough();                       // The common options may also stand behind a command.
  tool.footer(kDescriptorHelp);
  tool.failure_message(UsageErrorMessage);
  AddCommonOptions(tool, settings);
  for (const auto add_commands : kCommandFamilies) {
    add_commands(tool, settings);
  }
  try {
    tool.parse(argc, argv);
    return kSuccess;
  } catch (const CLI::ParseError& error) {
    return AnswerCommandLine(tool, error);
  }
}

int Run(int argc, char** argv) {
  Settings settings;
  try {
    return ReadCommandLineAndRun(argc, argv, settings);
  } catch (const Failure& failure) {
    PrintFailure(failure, settings);
  } catch (const std::bad_alloc&) {
    PrintFailure(Failure("cannot go on", VEXO_ERROR_OUT_OF_MEMORY), settings);
  }
  return kOperationFailed;
}

}  // namespace
}  // namespace vexoctl

int main(int argc, char** argv) { return vexoctl::Run(argc, argv); }
