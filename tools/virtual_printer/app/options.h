#ifndef VIRTUAL_PRINTER_APP_OPTIONS_H_
#define VIRTUAL_PRINTER_APP_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/model/printer_state.h"
#include "virtual_printer/wire/connection_faults.h"

namespace virtual_printer {

// What the command line asks for.
struct Options {
  std::string address = "127.0.0.1";
  std::optional<std::uint16_t> port;  // Nothing if the printer is on a line only.
  std::string line;                   // The link to its pseudo terminal, or the name of its pipe; empty for none.
  PrinterSetup printer;
  ConnectionFaults faults;
  std::optional<std::uint16_t> loader_port;  // The printer's port unless given.
  std::string store;                         // Folder for downloads; empty for none.
  bool trace = false;
  bool once = false;
  bool console = false;
  bool discoverable = false;
  int count = 1;  // Number of printers, on this address and the next ones.
};

// Parses the command line. Returns nothing if the program has nothing to do, because of a wrong argument or --help. The
// message has been printed then, and *exit_status is set.
std::optional<Options> ParseOptions(int argc, char** argv, int* exit_status);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_OPTIONS_H_
