#include "vexoctl/value_text.h"

#include <cstdio>

namespace vexoctl {

std::string ValueText(uint32_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%08X (%u)", static_cast<unsigned>(value), static_cast<unsigned>(value));
  return text;
}

}  // namespace vexoctl
