// Conversion to GBK (code page 936), the encoding that hosts expect messages in.
#ifndef VEXO_MESSAGES_GBK_H_
#define VEXO_MESSAGES_GBK_H_

#include <cstdint>

namespace vexo {

// Converts UTF-8 to zero-terminated GBK and returns the number of bytes before the zero, which never exceeds the length
// of the UTF-8 text. Supports ASCII and the characters of the library's own messages; any other becomes "?".
uint32_t CopyUtf8AsGbk(const char* utf8, char* gbk);

}  // namespace vexo

#endif  // VEXO_MESSAGES_GBK_H_
