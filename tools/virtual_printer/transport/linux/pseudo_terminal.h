#ifndef VIRTUAL_PRINTER_TRANSPORT_LINUX_PSEUDO_TERMINAL_H_
#define VIRTUAL_PRINTER_TRANSPORT_LINUX_PSEUDO_TERMINAL_H_

#include <string>

namespace virtual_printer {

// A pair of connected terminals in raw mode. The printer has this end; hosts open the other one by a symbolic link.
class PseudoTerminal {
 public:
  // Replaces a dangling link, which a killed printer leaves behind. Throws std::system_error, with
  // asio::error::address_in_use if anything else has this name.
  explicit PseudoTerminal(std::string link);
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Returns another non-blocking descriptor of the printer's end, owned by the caller. Reading from it fails with EIO
  // if there is no host. Throws std::system_error.
  int Duplicate() const;

  // Whether no host has its end open.
  bool IsHungUp() const;

  // Whether a host has opened its end, or has left something to read.
  bool HasHost() const;

  // Discards what hosts have sent so far; if one sends without pause, not all of it.
  void DiscardReceived() const;

  // Discards what no host has read, so that the next one does not read it.
  void DiscardSent() const;

 private:
  int Poll() const;
  int OpenHostEnd() const;

  const std::string link_;
  int printer_end_ = -1;
  std::string host_end_;  // Path of the host's end, to which the link points.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_LINUX_PSEUDO_TERMINAL_H_
