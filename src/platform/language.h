// The language of the messages.
#ifndef VEXO_PLATFORM_LANGUAGE_H_
#define VEXO_PLATFORM_LANGUAGE_H_

#include <cstdint>

namespace vexo::platform {

// Windows primary language identifiers (the low ten bits of a language identifier).
inline constexpr int32_t kLanguageChinese = 4;
inline constexpr int32_t kLanguageEnglish = 9;

// Returns the primary language of the user's default language.
int32_t UserPrimaryLanguage();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_LANGUAGE_H_
