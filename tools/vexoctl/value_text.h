#ifndef VEXOCTL_VALUE_TEXT_H_
#define VEXOCTL_VALUE_TEXT_H_

#include <cstdint>
#include <string>

namespace vexoctl {

// A value whose bits mean something to the printer's maker, "0x0000001F (31)": all its digits, and as a number.
std::string ValueText(uint32_t value);

}  // namespace vexoctl

#endif  // VEXOCTL_VALUE_TEXT_H_
