#ifndef VEXOCTL_SYSTEM_PORTS_H_
#define VEXOCTL_SYSTEM_PORTS_H_

#include <string>
#include <vector>

namespace vexoctl {

// Names of the ports that the system's drivers serve now, "COM3" or "LPT1", in the order of their numbers.
std::vector<std::string> SerialPorts();
std::vector<std::string> ParallelPorts();

}  // namespace vexoctl

#endif  // VEXOCTL_SYSTEM_PORTS_H_
