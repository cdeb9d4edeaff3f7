// Scans for receipt printers on the network and reads the print width of the first one: first_printer_found [TARGET]
//
//   first_printer_found                   searches the local network
//   first_printer_found 192.168.1.255
#include <chrono>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#include "vexo/printer.hpp"

int main(int argc, char** argv) {
  const std::string target = argc > 1 ? argv[1] : "255.255.255.255";
  try {
    const std::vector<vexo::NetworkPrinter> found = vexo::ScanNetwork(ScanPos, std::chrono::seconds(2), target);
    for (const vexo::NetworkPrinter& printer : found) {
      std::printf("found %s\n", printer.descriptor().c_str());
    }
    if (found.empty()) {
      std::fprintf(stderr, "no printer answers\n");
      return 1;
    }
    vexo::Printer printer(found.front().descriptor());
    printer.Open();
    std::printf("the first one prints %u dots wide\n", static_cast<unsigned>(printer.GetPrintWidth()));

    // With an error code instead of an exception.
    std::error_code error;
    printer.SetPrintWidth(576, &error);
    std::printf("setting 576 dots: %s\n", error.message().c_str());
    return error ? 1 : 0;
  } catch (const std::system_error& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
