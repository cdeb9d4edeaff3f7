#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

std::uint32_t ReadNumber(const std::uint8_t* data, std::size_t size) {
  std::uint32_t value = 0;
  while (size > 0) {
    value = value << 8 | data[--size];
  }
  return value;
}

std::string HexText(unsigned value, std::size_t digits) {
  std::string text(digits, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
    *digit = "0123456789ABCDEF"[value & 15];
    value >>= 4;
  }
  return text;
}

std::string CountOfBytes(std::size_t count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }

std::string Printable(std::string_view text) {
  std::string printable;
  for (const char character : text) {
    if (character >= ' ' && character <= '~') {
      printable += character;
    } else {
      printable += "\\x" + HexText(static_cast<unsigned char>(character), 2);
    }
  }
  return printable;
}

}  // namespace virtual_printer
