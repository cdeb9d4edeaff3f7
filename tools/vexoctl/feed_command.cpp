#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/failure.h"
#include "vexoctl/job_monitor.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

void Feed(const Settings& settings) {
  PrinterSession session(settings.descriptor);
  session.Open(settings.time_limit);
  const JobMonitor monitor(session.handle(), settings);
  Require(SetPaperFeed(monitor.get()), "cannot feed the paper of " + settings.PrinterName());
  PrintResult({"paper fed\n", {{"fed", true}}}, settings);
}

}  // namespace

void AddFeedCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const feed = tool.add_subcommand("feed", "Feed paper to the next form");
  feed->needs(tool.get_option(kPortOption));
  feed->footer(
      "The printer does not confirm it: success means that the command was sent.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 feed");
  feed->callback([&settings] { Feed(settings); });
}

}  // namespace vexoctl
