#include <cstring>

#include "monitor/last_error.h"
#include "vexo/extend.h"

namespace {

constexpr char kVersion[] = VEXO_VERSION;

}  // namespace

int32_t GetExtendVersion(char* buffer, uint32_t size) {
  if (buffer == nullptr || size < sizeof(kVersion)) {
    return VEXO_ERROR_PARAMETER;
  }
  std::memcpy(buffer, kVersion, sizeof(kVersion));
  return VEXO_OK;
}

int32_t GetLastErrorCode(void) { return vexo::LastErrorCode(); }
