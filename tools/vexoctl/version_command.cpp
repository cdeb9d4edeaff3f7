#include <string>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/failure.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

void PrintVersions(const Settings& settings) {
  char library[8] = {};
  Require(GetExtendVersion(library, sizeof library), "cannot read the version of the library");
  PrintResult({std::string("vexoextend ") + library + "\nvexoctl " VEXOCTL_VERSION "\n",
               {{"vexoextend", library}, {"vexoctl", VEXOCTL_VERSION}}},
              settings);
}

}  // namespace

void AddVersionCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const version = tool.add_subcommand("version", "Print the versions of vexoextend.dll and of this tool");
  version->footer(
      "Examples:\n"
      "  vexoctl version\n"
      "  vexoctl --json version");
  version->callback([&settings] { PrintVersions(settings); });
}

}  // namespace vexoctl
