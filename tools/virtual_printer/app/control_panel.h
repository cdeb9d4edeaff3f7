#ifndef VIRTUAL_PRINTER_APP_CONTROL_PANEL_H_
#define VIRTUAL_PRINTER_APP_CONTROL_PANEL_H_

#include <asio.hpp>
#include <chrono>
#include <ostream>
#include <string>

#include "virtual_printer/app/console_command.h"
#include "virtual_printer/app/printer_service.h"

namespace virtual_printer {

// Carries out what is typed at the console, while the printer works on.
class ControlPanel {
 public:
  // The references must outlive the panel. The pause is the one between the single bytes of a split answer.
  ControlPanel(asio::io_context& context, PrinterService& service, std::chrono::milliseconds split_pause,
               std::ostream& out)
      : context_(context), service_(service), split_pause_(split_pause), out_(out) {}

  void OnLine(const std::string& line);

 private:
  void Execute(const ConsoleCommand& command);
  void Say(const std::string& text);

  asio::io_context& context_;
  PrinterService& service_;
  const std::chrono::milliseconds split_pause_;
  std::ostream& out_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_CONTROL_PANEL_H_
