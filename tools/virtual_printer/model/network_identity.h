#ifndef VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_
#define VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_

#include <array>
#include <cstdint>
#include <string>

namespace virtual_printer {

using Ipv4Address = std::array<std::uint8_t, 4>;  // As it is written, first number first.

// What a printer tells of itself to whoever looks for printers on the network.
struct NetworkIdentity {
  std::string name = "VIRTUAL";
  std::string state = "ready";
  int number = 0;  // Of several printers that one program poses as, from 1; 0 for a printer alone.
  Ipv4Address address{};
  Ipv4Address mask{255, 255, 255, 0};
  Ipv4Address gateway{};
  std::uint16_t port = 9100;

  // Tells several printers apart.
  std::string FullName() const { return number > 0 ? name + "-" + std::to_string(number) : name; }
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_NETWORK_IDENTITY_H_
