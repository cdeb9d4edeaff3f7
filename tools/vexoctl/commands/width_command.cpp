#include <cstdint>
#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

// Printers store the width in 16 bits; the library drops all others.
constexpr uint32_t kMaxWidth = 65535;

void PrintWidth(uint32_t width, const Options& options) {
  PrintResult({std::to_string(width) + "\n", {{"width", width}}}, options);
}

void GetWidth(const Options& options) {
  vexo::Printer printer = OpenPrinter(options);
  std::error_code error;
  const uint32_t width = printer.GetPrintWidth(&error);
  Require(error, "cannot read the print width of " + options.PrinterName());
  PrintWidth(width, options);
}

void SetWidth(uint32_t width, const Options& options) {
  vexo::Printer printer = OpenPrinter(options);
  std::error_code error;
  printer.SetPrintWidth(width, &error);
  Require(error, "cannot set the print width of " + options.PrinterName());
  PrintWidth(width, options);
}

}  // namespace

void AddWidthCommand(CLI::App& tool, const Options& options) {
  CLI::App* const width = tool.add_subcommand("width", "Read or change the print width");
  width->require_subcommand(1);
  width->needs(tool.get_option(kPortOption));
  width->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 width get\n"
      "  vexoctl -p USB width set 640");

  CLI::App* const get = width->add_subcommand("get", "Print the printer's print width in dots");
  get->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 width get\n"
      "  vexoctl -p COM3,9600 --json width get");
  get->callback([&options] { GetWidth(options); });

  CLI::App* const set = width->add_subcommand("set", "Set the print width in dots; the printer stores it");
  CLI::Option* const dots = set->add_option("N")->required()->transform(WholeNumber(0, kMaxWidth));
  dots->description("Width in dots, 0 to " + std::to_string(kMaxWidth));
  set->footer(
      "Prints the width that the printer has stored.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 width set 640");
  set->callback([dots, &options] { SetWidth(dots->as<uint32_t>(), options); });
}

}  // namespace vexoctl
