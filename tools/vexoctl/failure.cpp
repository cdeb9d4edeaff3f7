#include "vexoctl/failure.h"

#include <utility>

namespace vexoctl {

Failure::Failure(std::string action, int32_t code) : action_(std::move(action)), code_(code) {}

void Require(int32_t code, const std::string& action) {
  if (code != 0) {
    throw Failure(action, code);
  }
}

}  // namespace vexoctl
