#include "virtual_printer/transport/linux/pseudo_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <asio/error.hpp>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

namespace virtual_printer {
namespace {

[[noreturn]] void ThrowSystemError() { throw std::system_error(errno, std::system_category()); }

int Checked(int result) {
  if (result < 0) {
    ThrowSystemError();
  }
  return result;
}

void MakeRaw(int terminal) {
  termios settings = {};
  Checked(tcgetattr(terminal, &settings));
  cfmakeraw(&settings);
  Checked(tcsetattr(terminal, TCSANOW, &settings));
}

// Closes its descriptor unless it is released.
class ScopedDescriptor {
 public:
  explicit ScopedDescriptor(int descriptor) : descriptor_(Checked(descriptor)) {}
  ~ScopedDescriptor() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  ScopedDescriptor(const ScopedDescriptor&) = delete;
  ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;

  int get() const { return descriptor_; }
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

// To be called before the terminal is opened, which may get the name of the one that the link points to.
void RemoveDeadLink(const std::string& link) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (fs::is_symlink(fs::symlink_status(link, ignored)) && !fs::exists(link, ignored)) {
    fs::remove(link, ignored);
  }
}

void MakeLink(const std::string& target, const std::string& link) {
  if (symlink(target.c_str(), link.c_str()) == 0) {
    return;
  }
  if (errno == EEXIST) {
    throw std::system_error(asio::error::address_in_use);
  }
  ThrowSystemError();
}

}  // namespace

PseudoTerminal::PseudoTerminal(std::string link) : link_(std::move(link)) {
  RemoveDeadLink(link_);
  ScopedDescriptor printer_end(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  Checked(grantpt(printer_end.get()));
  Checked(unlockpt(printer_end.get()));
  host_end_ = ptsname(printer_end.get());
  // A terminal reports a hang-up only once it has been open.
  MakeRaw(ScopedDescriptor(OpenHostEnd()).get());
  MakeLink(host_end_, link_);
  printer_end_ = printer_end.Release();
}

PseudoTerminal::~PseudoTerminal() {
  std::error_code unreadable;
  if (std::filesystem::read_symlink(link_, unreadable) == host_end_) {
    unlink(link_.c_str());
  }
  close(printer_end_);
}

int PseudoTerminal::OpenHostEnd() const { return open(host_end_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK); }

int PseudoTerminal::Duplicate() const { return Checked(fcntl(printer_end_, F_DUPFD_CLOEXEC, 0)); }

int PseudoTerminal::Poll() const {
  pollfd state = {printer_end_, POLLIN, 0};
  poll(&state, 1, /*timeout=*/0);
  return state.revents;
}

bool PseudoTerminal::IsHungUp() const { return (Poll() & POLLHUP) != 0; }

bool PseudoTerminal::HasHost() const {
  const int state = Poll();
  return (state & POLLHUP) == 0 || (state & POLLIN) != 0;
}

void PseudoTerminal::DiscardReceived() const {
  constexpr int kMostReads = 16;
  std::array<std::uint8_t, 4096> bytes{};
  for (int i = 0; i < kMostReads && read(printer_end_, bytes.data(), bytes.size()) > 0; ++i) {
  }
}

void PseudoTerminal::DiscardSent() const {
  const int host_end = OpenHostEnd();
  if (host_end >= 0) {
    tcflush(host_end, TCIFLUSH);
    close(host_end);
  }
}

}  // namespace virtual_printer
