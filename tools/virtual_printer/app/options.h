#ifndef VIRTUAL_PRINTER_APP_OPTIONS_H_
#define VIRTUAL_PRINTER_APP_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/faults.h"

namespace virtual_printer {

// What the command line asks for.
struct Options {
  std::string address = "127.0.0.1";
  std::optional<std::uint16_t> port;  // Nothing when the printer is found on a line alone.
  std::string line;                   // Its pseudo terminal's link or its pipe's name; empty for none.
  PrinterSetup printer;
  Faults faults;
  std::optional<std::uint16_t> loader_port;  // The printer's, when it is not given.
  std::string store;                         // Folder for downloads; empty for none.
  bool trace = false;
  bool once = false;
  bool console = false;
  bool discoverable = false;  // Answers hosts that look for printers.
  int count = 1;              // Printers, on this address and the next ones.
};

// Reads the command line. When there is nothing left to do (a wrong argument, --help), it has said so, and *exit_status
// is what the program ends with.
std::optional<Options> ParseOptions(int argc, char** argv, int* exit_status);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_OPTIONS_H_
