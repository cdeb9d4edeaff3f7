#ifndef VIRTUAL_PRINTER_PRINTER_STATE_H_
#define VIRTUAL_PRINTER_PRINTER_STATE_H_

#include <cstdint>

namespace virtual_printer {

constexpr std::uint16_t kDefaultPrintWidth = 576;

// The settings that a host reaches by key number.
struct ParameterZone {
  std::uint16_t print_width = kDefaultPrintWidth;  // In dots.
};

// What a printer has only once, however many hosts are connected.
struct PrinterState {
  PrinterState() = default;
  explicit PrinterState(ParameterZone zone) : current(zone), saved(zone) {}

  ParameterZone current;               // In force.
  ParameterZone saved;                 // Survives switching off.
  std::uint64_t print_data_bytes = 0;  // Received so far.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_PRINTER_STATE_H_
