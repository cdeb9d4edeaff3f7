#ifndef VEXOCTL_SUPPORT_CONFIG_CHECK_H_
#define VEXOCTL_SUPPORT_CONFIG_CHECK_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexoctl {

// A line that the library ignores or reads in another way than its author meant. It refuses no line.
struct WrongLine {
  size_t row;  // Counted from 1.
  std::string reason;
};

// Finds the wrong lines of a configuration file, in their order. The text must be decoded.
std::vector<WrongLine> CheckConfigText(std::string_view text);

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_CONFIG_CHECK_H_
