#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/support/monitoring.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

void FeedPaper(const Options& options) {
  vexo::Printer printer = OpenPrinter(options);
  JobMonitoring monitoring(printer, options);
  std::error_code error;
  monitoring.monitor().FeedPaper(&error);
  Require(error, "cannot feed the paper of " + options.PrinterName());
  PrintResult({"paper fed\n", {{"fed", true}}}, options);
}

}  // namespace

void AddFeedCommand(CLI::App& tool, const Options& options) {
  CLI::App* const feed = tool.add_subcommand("feed", "Feed paper to the next form");
  feed->needs(tool.get_option(kPortOption));
  feed->footer(
      "The printer does not confirm it: success means that the command was sent.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 feed");
  feed->callback([&options] { FeedPaper(options); });
}

}  // namespace vexoctl
