#include "vexoctl/support/printer.h"

#include <system_error>

#include "vexoctl/console/failure.h"
#include "vexoctl/console/text.h"

namespace vexoctl {

vexo::Printer MakePrinter(const std::string& descriptor) {
  std::error_code error;
  vexo::Printer printer(descriptor, &error);
  Require(error, "cannot open " + Utf8FromAnsi(descriptor));
  return printer;
}

vexo::Printer OpenPrinter(const Options& options) {
  vexo::Printer printer = MakePrinter(options.descriptor);
  std::error_code error;
  if (options.time_limit) {
    printer.SetTimeLimit(*options.time_limit, &error);
    Require(error, "cannot set the time limits of the port");
  }
  printer.Open(&error);
  Require(error, "cannot open " + options.PrinterName());
  return printer;
}

}  // namespace vexoctl
