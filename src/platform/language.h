// The language that messages are shown in.
#ifndef VEXO_PLATFORM_LANGUAGE_H_
#define VEXO_PLATFORM_LANGUAGE_H_

#include <cstdint>

namespace vexo::platform {

// Primary language identifiers as Windows numbers them (the low ten bits of a language identifier).
inline constexpr int32_t kLanguageChinese = 4;
inline constexpr int32_t kLanguageEnglish = 9;

// Primary language of the user's default language.
int32_t UserPrimaryLanguage();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_LANGUAGE_H_
