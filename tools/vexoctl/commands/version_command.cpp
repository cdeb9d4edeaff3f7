#include <string>

#include "vexo/extend.h"
#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"

namespace vexoctl {
namespace {

void PrintVersions(const Options& options) {
  char library[VEXO_VERSION_SIZE] = {};
  Require(GetExtendVersion(library, sizeof library), "cannot read the version of the library");
  PrintResult({std::string("vexoextend ") + library + "\nvexoctl " VEXOCTL_VERSION "\n",
               {{"vexoextend", library}, {"vexoctl", VEXOCTL_VERSION}}},
              options);
}

}  // namespace

void AddVersionCommand(CLI::App& tool, const Options& options) {
  CLI::App* const version = tool.add_subcommand("version", "Print the versions of vexoextend.dll and of this tool");
  version->footer(
      "Examples:\n"
      "  vexoctl version\n"
      "  vexoctl --json version");
  version->callback([&options] { PrintVersions(options); });
}

}  // namespace vexoctl
