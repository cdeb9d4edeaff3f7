#include "platform/language.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace vexo::platform {

// Checks the locale variables in the order of the C library.
int32_t UserPrimaryLanguage() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const locale = std::getenv(variable);
    if (locale != nullptr && *locale != '\0') {
      return std::strncmp(locale, "zh", 2) == 0 ? kLanguageChinese : kLanguageEnglish;
    }
  }
  return kLanguageEnglish;
}

}  // namespace vexo::platform
