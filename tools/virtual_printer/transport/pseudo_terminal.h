#ifndef VIRTUAL_PRINTER_TRANSPORT_PSEUDO_TERMINAL_H_
#define VIRTUAL_PRINTER_TRANSPORT_PSEUDO_TERMINAL_H_

#include <string>

namespace virtual_printer {

// A pair of connected terminals, as raw as a serial line. This end is the printer's; hosts open the other one, by a
// symbolic link.
class PseudoTerminal {
 public:
  // A link that leads nowhere, as a printer that was killed leaves it behind, is replaced. Throws std::system_error,
  // with asio::error::address_in_use when there is anything else of this name.
  explicit PseudoTerminal(std::string link);
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Another descriptor of the printer's end, which does not block and belongs to the caller. Reading from it fails with
  // EIO when there is no host. Throws std::system_error.
  int Duplicate() const;

  // Whether no host has its end open.
  bool IsHungUp() const;

  // Whether a host has opened its end, or has been there and left something to read.
  bool HasHost() const;

  // Throws away what hosts have sent so far. One that sends on and on is left something for the next time.
  void DiscardReceived() const;

  // Throws away what no host has taken: the next one is not to read it.
  void DiscardSent() const;

 private:
  int Poll() const;
  int OpenHostEnd() const;

  const std::string link_;
  int printer_end_ = -1;
  std::string host_end_;  // Its path, the link's target.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_PSEUDO_TERMINAL_H_
