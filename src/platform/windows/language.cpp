#include "platform/language.h"

#include <windows.h>

namespace vexo::platform {

int32_t UserPrimaryLanguage() {
  constexpr LANGID kPrimaryLanguageMask = 0x3FF;
  return GetUserDefaultLangID() & kPrimaryLanguageMask;
}

}  // namespace vexo::platform
