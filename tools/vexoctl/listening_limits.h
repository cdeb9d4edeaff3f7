#ifndef VEXOCTL_LISTENING_LIMITS_H_
#define VEXOCTL_LISTENING_LIMITS_H_

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <optional>

namespace vexoctl {

// When a command that listens stops by itself; without either, only the user ends it.
struct ListeningLimits {
  std::optional<uint32_t> events;
  std::optional<std::chrono::milliseconds> time;
};

// The options --count and --for of such a command.
class LimitOptions {
 public:
  explicit LimitOptions(CLI::App* command);

  // What the user gave; once the whole command line has been read.
  ListeningLimits Read() const;

 private:
  CLI::Option* count_;
  CLI::Option* time_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_LISTENING_LIMITS_H_
