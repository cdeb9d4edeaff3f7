#include "vexoctl/printer_session.h"

#include <chrono>
#include <system_error>

#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

vexo::Printer MakePrinter(const std::string& descriptor, const std::string& open_action) {
  std::error_code error;
  vexo::Printer printer(descriptor, &error);
  Require(error.value(), open_action);
  return printer;
}

}  // namespace

PrinterSession::PrinterSession(const std::string& descriptor)
    : open_action_("cannot open " + Utf8FromAnsi(descriptor)), printer_(MakePrinter(descriptor, open_action_)) {}

void PrinterSession::Open(std::optional<uint32_t> time_limit) {
  std::error_code error;
  if (time_limit) {
    printer_.SetTimeLimit(std::chrono::milliseconds(*time_limit), &error);
    Require(error.value(), "cannot set the time limits of the port");
  }
  printer_.Open(&error);
  Require(error.value(), open_action_);
}

}  // namespace vexoctl
