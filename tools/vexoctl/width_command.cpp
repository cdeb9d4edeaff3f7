#include <cstdint>
#include <limits>
#include <string>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/failure.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

// A printer keeps the width in 16 bits; the library would drop the bits above them without a word.
constexpr uint32_t kMaxWidth = 65535;

void PrintWidth(uint32_t width, const Settings& settings) {
  PrintResult({std::to_string(width) + "\n", {{"width", width}}}, settings);
}

void GetWidth(const Settings& settings) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);

  constexpr uint32_t kNoWidth = std::numeric_limits<uint32_t>::max();
  uint32_t width = kNoWidth;
  Require(GetPrintWidth(session.handle(), &width), "cannot read the print width of " + settings.PrinterName());
  // The library reports a read that ended early without an error as success and leaves the width alone.
  if (width == kNoWidth) {
    throw Failure("no complete answer about the print width of " + settings.PrinterName(), VEXO_ERROR_IO_READ);
  }
  PrintWidth(width, settings);
}

void SetWidth(uint32_t width, const Settings& settings) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);
  Require(SetPrintWidth(session.handle(), width), "cannot set the print width of " + settings.PrinterName());
  PrintWidth(width, settings);
}

}  // namespace

void AddWidthCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const width = tool.add_subcommand("width", "Read or change the print width");
  width->require_subcommand(1);
  width->needs(tool.get_option(kPortOption));
  width->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 width get\n"
      "  vexoctl -p USB width set 640");

  CLI::App* const get = width->add_subcommand("get", "Print the width the printer is set to, in dots");
  get->footer(
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 width get\n"
      "  vexoctl -p COM3,9600 --json width get");
  get->callback([&settings] { GetWidth(settings); });

  CLI::App* const set = width->add_subcommand("set", "Set the width, in dots; the printer stores it and keeps it");
  CLI::Option* const dots = set->add_option("N")->required()->transform(WholeNumber(0, kMaxWidth));
  dots->description("Width in dots, 0 to " + std::to_string(kMaxWidth));
  set->footer(
      "Prints the width the printer has stored.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 width set 640");
  set->callback([dots, &settings] { SetWidth(dots->as<uint32_t>(), settings); });
}

}  // namespace vexoctl
