#ifndef VIRTUAL_PRINTER_WIRE_BYTES_H_
#define VIRTUAL_PRINTER_WIRE_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_printer {

using Bytes = std::vector<std::uint8_t>;

// The view is valid while the bytes are.
inline std::string_view AsText(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Numbers on the wire are little-endian.
std::uint32_t ReadNumber(const std::uint8_t* data, std::size_t size);

// Works for Bytes and std::string.
template <typename Container>
void AppendNumber(std::uint32_t value, int size, Container& out) {
  for (int i = 0; i < size; ++i) {
    out.push_back(static_cast<typename Container::value_type>(value >> (8 * i)));
  }
}

// The lowest hexadecimal digits of the value, in upper case: HexText(0xCC, 4) is "00CC".
std::string HexText(unsigned value, std::size_t digits);

// "1 byte", "2 bytes".
std::string CountOfBytes(std::size_t count);

// Replaces everything but printable ASCII by \xNN: hosts may send any byte, and traces are read on terminals.
std::string Printable(std::string_view text);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_BYTES_H_
