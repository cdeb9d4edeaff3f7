#ifndef VIRTUAL_PRINTER_WIRE_HEX_TEXT_H_
#define VIRTUAL_PRINTER_WIRE_HEX_TEXT_H_

#include <cstddef>
#include <string>

namespace virtual_printer {

// The lowest digits of the value, in capitals: HexText(0xCC, 4) is 00CC.
inline std::string HexText(unsigned value, std::size_t digits) {
  std::string text(digits, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
    *digit = "0123456789ABCDEF"[value & 15];
    value >>= 4;
  }
  return text;
}

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_HEX_TEXT_H_
