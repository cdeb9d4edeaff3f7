#ifndef VIRTUAL_PRINTER_WIRE_BYTES_H_
#define VIRTUAL_PRINTER_WIRE_BYTES_H_

#include <cstdint>
#include <vector>

namespace virtual_printer {

using Bytes = std::vector<std::uint8_t>;

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_BYTES_H_
