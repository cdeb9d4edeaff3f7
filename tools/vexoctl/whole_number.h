#ifndef VEXOCTL_WHOLE_NUMBER_H_
#define VEXOCTL_WHOLE_NUMBER_H_

#include <CLI/CLI.hpp>
#include <cstdint>

namespace vexoctl {

// Accepts a decimal number of a range on the command line. Leading zeros are dropped: the option's own conversion
// would take "0640" for an octal number and set a printer to 416 dots.
CLI::Validator WholeNumber(uint32_t lowest, uint32_t highest);

}  // namespace vexoctl

#endif  // VEXOCTL_WHOLE_NUMBER_H_
