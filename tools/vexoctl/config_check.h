#ifndef VEXOCTL_CONFIG_CHECK_H_
#define VEXOCTL_CONFIG_CHECK_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexoctl {

// A line that the library would read in another way than its author meant, or not at all: it refuses nothing.
struct WrongLine {
  size_t row;  // Counted from 1.
  std::string reason;
};

// The wrong lines of a configuration file, in their order. The text is decoded.
std::vector<WrongLine> CheckConfigText(std::string_view text);

}  // namespace vexoctl

#endif  // VEXOCTL_CONFIG_CHECK_H_
