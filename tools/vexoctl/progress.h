#ifndef VEXOCTL_PROGRESS_H_
#define VEXOCTL_PROGRESS_H_

#include <chrono>
#include <cstdint>

#include "vexoctl/console_line.h"

namespace vexoctl {

// A line on the console that says how far a long transfer has come. Nothing is shown for a short one.
class Progress {
 public:
  // @param total in bytes; 0 when it is not known.
  explicit Progress(uint64_t total);

  void Show(uint64_t done);

 private:
  const uint64_t total_;
  ConsoleLine line_;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_PROGRESS_H_
